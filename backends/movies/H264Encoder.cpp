#include "backends/movies/H264Encoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "backends/movies/movie_errors.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

namespace vistrane {

namespace {

// NAL unit types (ITU-T H.264, table 7-1).
constexpr unsigned sequenceParameterType = 7;
constexpr unsigned pictureParameterType = 8;
constexpr unsigned delimiterType = 9;

bool takesPlanar420(const AVCodec& codec) {
    for (const AVPixelFormat* format = codec.pix_fmts; format && *format != AV_PIX_FMT_NONE;
         ++format) {
        if (*format == AV_PIX_FMT_YUV420P) {
            return true;
        }
    }
    return false;
}

bool isUsable(const AVCodec& codec) {
    return av_codec_is_encoder(&codec) && codec.id == AV_CODEC_ID_H264 && takesPlanar420(codec) &&
           (codec.capabilities & AV_CODEC_CAP_EXPERIMENTAL) == 0;
}

/// The encoders to try, the best first. Some need certain hardware; without it, opening them fails.
std::vector<const AVCodec*> findEncoders() {
    std::vector<const AVCodec*> encoders;
    const AVCodec* const best = avcodec_find_encoder_by_name("libx264");
    if (best != nullptr && isUsable(*best)) {
        encoders.push_back(best);
    }
    void* position = nullptr;
    while (const AVCodec* const codec = av_codec_iterate(&position)) {
        if (codec != best && isUsable(*codec)) {
            encoders.push_back(codec);
        }
    }
    return encoders;
}

NSError encoderError(int number, const std::string& what, const std::string& advice) {
    char reason[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(number, reason, sizeof reason);
    return movieError(AVErrorUnknown, what + ": " + reason + ". " + advice);
}

NSError encodingError(int number) {
    return encoderError(number, "The H.264 encoder failed",
                        "Close some programs and compile again");
}

void describePictures(AVCodecContext& context, int width, int height, std::int32_t timescale) {
    context.width = width;
    context.height = height;
    context.time_base = {1, timescale};
    context.framerate = {timescale, 1};
    context.sample_aspect_ratio = {1, 1};
    context.pix_fmt = AV_PIX_FMT_YUV420P;
    context.color_range = AVCOL_RANGE_MPEG;
    context.color_primaries = AVCOL_PRI_BT709;
    context.color_trc = AVCOL_TRC_BT709;
    context.colorspace = AVCOL_SPC_BT709;
    context.chroma_sample_location = AVCHROMA_LOC_LEFT;
}

/// libx264's preset veryfast with a coarser motion search. The time that this saves is spent on
/// settings that gain more if most pictures are alike, like those of a stationary camera:
/// - three reference pictures and a longer look-ahead;
/// - more bits for the pictures that others refer to;
/// - a lower quantiser for chroma, as the slower presets have;
/// - weaker deblocking, and no removal of isolated coefficients.
///
/// 150 frames of 1920 x 1080, a scene with gusts of wind, people and sensor noise, encoding alone:
/// constant rate factor, size, SSIM of all planes, processor time.
///
///     medium                                         23     6.83 MB  0.9550  14.9 s
///     veryfast                                       22     7.90 MB  0.9547   5.4 s
///     these with veryfast's motion search, 2 refs    21.6   7.38 MB  0.9566   5.7 s
///     these                                          21.75  7.48 MB  0.9576   4.3 s
///     these with trellis, 2 refs                     22     7.58 MB  0.9571   5.0 s
///     these with 5 B-pictures, 2 refs                22     7.11 MB  0.9549   4.2 s
///     these with 2 refs                              22     7.50 MB  0.9560   4.0 s
///
/// Variance-based adaptive quantisation, a look-ahead of 40 and other partitions gain less than
/// they cost.
void chooseOwnSettings(AVDictionary** settings) {
    av_dict_set(settings, "preset", "veryfast", 0);
    av_dict_set(settings, "x264-params",
                "subme=1:ref=3:rc-lookahead=15:qcomp=0.5:chroma-qp-offset=-3:deblock=-2,-2:"
                "no-dct-decimate=1",
                0);
}

/// For encoders without constant quality: a fifth of a bit per pixel.
std::int64_t ampleBitRate(int width, int height, std::int32_t timescale) {
    constexpr std::int64_t limit = 400'000'000;
    return std::min(std::int64_t{width} * height * std::min(timescale, 60) / 5, limit);
}

/// Calls `take(first, end)` for each NAL unit of a byte stream with start codes.
template <typename Take>
void forEachUnit(const std::uint8_t* bytes, std::size_t count, const Take& take) {
    const std::uint8_t* const end = bytes + count;
    const auto startCode = [end](const std::uint8_t* from) {
        static constexpr std::uint8_t code[] = {0, 0, 1};
        return std::search(from, end, std::begin(code), std::end(code));
    };
    for (const std::uint8_t* at = startCode(bytes); at != end;) {
        const std::uint8_t* const first = at + 3;
        at = startCode(first);
        const std::uint8_t* last = at;
        while (last != first && last[-1] == 0) { // trailing zero bytes are not part of the unit
            --last;
        }
        if (last != first) {
            take(first, last);
        }
    }
}

void appendBigEndian(std::vector<std::uint8_t>& bytes, std::size_t value, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xFF));
    }
}

/// Profiles whose configuration record also has the chroma format and the bit depths.
bool isHighProfile(unsigned profile) {
    return profile == 100 || profile == 110 || profile == 122 || profile == 144;
}

class Module final : public EncoderModule {
public:
    std::optional<NSError> availability() const override { return H264Encoder::availability(); }

    std::unique_ptr<VideoFrame> makeFrame(int width, int height) const override {
        LibavPointer<AVFrame> frame(av_frame_alloc());
        if (!frame) {
            return nullptr;
        }
        frame->format = AV_PIX_FMT_YUV420P;
        frame->width = width;
        frame->height = height;
        if (av_frame_get_buffer(frame.get(), 0) != 0) {
            return nullptr;
        }
        return std::make_unique<LibavFrame>(std::move(frame));
    }

    std::unique_ptr<VideoEncoder> makeEncoder(const MovieOptions& options) const override {
        return std::make_unique<H264Encoder>(options);
    }
};

} // namespace

void LibavDeleter::operator()(AVCodecContext* context) const {
    avcodec_free_context(&context);
}

void LibavDeleter::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

void LibavDeleter::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}

PlanarPicture LibavFrame::planes() {
    return {frame_->data[0],
            frame_->data[1],
            frame_->data[2],
            static_cast<std::size_t>(frame_->linesize[0]),
            static_cast<std::size_t>(frame_->linesize[1]),
            static_cast<std::size_t>(frame_->width),
            static_cast<std::size_t>(frame_->height)};
}

bool LibavFrame::isWritable() const {
    return av_frame_is_writable(frame_.get()) > 0;
}

std::optional<NSError> H264Encoder::availability() {
    if (!findEncoders().empty()) {
        return std::nullopt;
    }
    return movieError(AVErrorEncoderNotFound,
                      "The movie cannot be made: there is no H.264 encoder on this system. Install "
                      "libavcodec with libx264");
}

std::optional<NSError> H264Encoder::open(int width, int height, std::int32_t timescale) {
    std::optional<NSError> firstError;
    for (const AVCodec* codec : findEncoders()) {
        const auto error = openWith(*codec, width, height, timescale);
        if (!error) {
            return std::nullopt;
        }
        if (!firstError) {
            firstError = error;
        }
    }
    return firstError ? firstError : availability();
}

std::optional<NSError> H264Encoder::openWith(const AVCodec& codec, int width, int height,
                                             std::int32_t timescale) {
    LibavPointer<AVCodecContext> context(avcodec_alloc_context3(&codec));
    packet_.reset(av_packet_alloc());
    if (!context || !packet_) {
        return encodingError(AVERROR(ENOMEM));
    }
    describePictures(*context, width, height, timescale);
    // The library's messages are for developers. Its results say what has failed.
    context->log_level_offset = AV_LOG_TRACE;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->thread_count = 0; // the encoder chooses

    AVDictionary* settings = nullptr;
    if (std::string_view(codec.name) == "libx264") {
        char factor[32];
        std::snprintf(factor, sizeof factor, "%.3f", options_.constantRateFactor);
        if (options_.preset.empty()) {
            chooseOwnSettings(&settings);
        } else {
            av_dict_set(&settings, "preset", options_.preset.c_str(), 0);
        }
        av_dict_set(&settings, "crf", factor, 0);
    } else {
        context->bit_rate = ampleBitRate(width, height, timescale);
    }
    const int result = avcodec_open2(context.get(), &codec, &settings);
    av_dict_free(&settings);
    if (result < 0) {
        return encoderError(result,
                            "The H.264 encoder " + std::string(codec.name) +
                                " cannot be set up for " + std::to_string(width) + " x " +
                                std::to_string(height) + " pixels",
                            "Use smaller frames, or close some programs");
    }
    context_ = std::move(context);
    if (context_->extradata_size > 0) {
        takeParameterSets(context_->extradata, static_cast<std::size_t>(context_->extradata_size));
    }
    return std::nullopt;
}

std::optional<NSError> H264Encoder::encode(VideoFrame& frame, std::int64_t time, const Sink& sink) {
    AVFrame& picture = static_cast<LibavFrame&>(frame).frame();
    picture.pts = time;
    picture.pict_type = AV_PICTURE_TYPE_NONE;
    return send(&picture, sink);
}

std::optional<NSError> H264Encoder::finish(const Sink& sink) {
    return send(nullptr, sink);
}

std::optional<NSError> H264Encoder::send(const AVFrame* frame, const Sink& sink) {
    int result = avcodec_send_frame(context_.get(), frame);
    if (result == AVERROR(EAGAIN)) {
        if (auto error = receive(sink)) {
            return error;
        }
        result = avcodec_send_frame(context_.get(), frame);
    }
    if (result < 0) {
        return encodingError(result);
    }
    return receive(sink);
}

std::optional<NSError> H264Encoder::receive(const Sink& sink) {
    while (true) {
        const int result = avcodec_receive_packet(context_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return std::nullopt;
        }
        if (result < 0) {
            return encodingError(result);
        }
        repackage();
        av_packet_unref(packet_.get());
        if (auto error = sink(picture_)) {
            return error;
        }
    }
}

void H264Encoder::takeParameterSets(const std::uint8_t* bytes, std::size_t count) {
    forEachUnit(bytes, count, [this](const std::uint8_t* first, const std::uint8_t* last) {
        const unsigned type = *first & 0x1FU;
        if (type == sequenceParameterType && sequenceParameters_.empty()) {
            sequenceParameters_.assign(first, last);
        } else if (type == pictureParameterType && pictureParameters_.empty()) {
            pictureParameters_.assign(first, last);
        }
    });
}

/// Replaces start codes by lengths. Omits parameter sets, which belong in the configuration record.
void H264Encoder::repackage() {
    const std::uint8_t* bytes = packet_->data;
    const auto count = static_cast<std::size_t>(packet_->size);
    if (sequenceParameters_.empty() || pictureParameters_.empty()) {
        takeParameterSets(bytes, count);
    }
    picture_.bytes.clear();
    forEachUnit(bytes, count, [this](const std::uint8_t* first, const std::uint8_t* last) {
        const unsigned type = *first & 0x1FU;
        if (type == sequenceParameterType || type == pictureParameterType ||
            type == delimiterType) {
            return;
        }
        appendBigEndian(picture_.bytes, static_cast<std::size_t>(last - first), 4);
        picture_.bytes.insert(picture_.bytes.end(), first, last);
    });
    picture_.time = packet_->pts;
    picture_.isKey = (packet_->flags & AV_PKT_FLAG_KEY) != 0;
}

std::vector<std::uint8_t> H264Encoder::configuration() const {
    if (sequenceParameters_.size() < 4 || pictureParameters_.empty()) {
        return {};
    }
    std::vector<std::uint8_t> record = {1, sequenceParameters_[1], sequenceParameters_[2],
                                        sequenceParameters_[3]};
    record.push_back(0xFF); // lengths have 4 bytes
    record.push_back(0xE1); // one sequence parameter set
    appendBigEndian(record, sequenceParameters_.size(), 2);
    record.insert(record.end(), sequenceParameters_.begin(), sequenceParameters_.end());
    record.push_back(1); // one picture parameter set
    appendBigEndian(record, pictureParameters_.size(), 2);
    record.insert(record.end(), pictureParameters_.begin(), pictureParameters_.end());
    if (isHighProfile(sequenceParameters_[1])) {
        record.push_back(0xFD); // 4:2:0
        record.push_back(0xF8); // 8 bits of luma
        record.push_back(0xF8); // and of chroma
        record.push_back(0);    // no extension
    }
    return record;
}

} // namespace vistrane

const vistrane::EncoderModule* vistraneEncoderModule() {
    static const vistrane::Module module;
    return &module;
}
