#include "backends/movies/H264Encoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "backends/movies/Libav.h"
#include "backends/movies/movie_errors.h"
#include "backends/posix/threads.h"

extern "C" {
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
    return libav()->av_codec_is_encoder(&codec) && codec.id == AV_CODEC_ID_H264 &&
           takesPlanar420(codec) && (codec.capabilities & AV_CODEC_CAP_EXPERIMENTAL) == 0;
}

/// The encoders to try, the best first. Some that are there work with certain hardware only.
std::vector<const AVCodec*> findEncoders(const std::string& name) {
    std::vector<const AVCodec*> encoders;
    if (libav() == nullptr) {
        return encoders;
    }
    const AVCodec* wanted =
        libav()->avcodec_find_encoder_by_name(name.empty() ? "libx264" : name.c_str());
    if (wanted && isUsable(*wanted)) {
        encoders.push_back(wanted);
    }
    void* position = nullptr;
    while (const AVCodec* codec = name.empty() ? libav()->av_codec_iterate(&position) : nullptr) {
        if (codec != wanted && isUsable(*codec)) {
            encoders.push_back(codec);
        }
    }
    return encoders;
}

NSError encoderError(int number, const std::string& what, const std::string& advice) {
    char reason[AV_ERROR_MAX_STRING_SIZE] = {};
    libav()->av_strerror(number, reason, sizeof reason);
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

/// libx264's preset veryfast with a coarser motion search, and instead of that what costs less and
/// gains more for pictures of which many are alike, as those of a still camera are:
/// - three pictures to refer to, and a somewhat longer look ahead;
/// - more of the bits for the pictures that others are made from;
/// - chroma a little finer, as the slower presets have it too;
/// - edges smoothed a little less, and coefficients that stand alone are kept.
///
/// 150 frames of 1920 x 1080, a scene with gusts of wind, people and sensor noise, encoded alone:
/// size, SSIM of all planes, processor time.
///
///     medium 23                                 6.83 MB  0.9550  14.9 s
///     veryfast 22                               7.90 MB  0.9547   5.4 s
///     veryfast's motion search, 2 references    7.38 MB  0.9566   5.7 s  (21.6)
///     these 21.75                               7.48 MB  0.9576  4.3 s
///     ... with trellis, 2 references            7.58 MB  0.9571   5.0 s  (22)
///     ... with 5 B-pictures, 2 references       7.11 MB  0.9549   4.2 s  (22)
///     ... with 2 references                     7.50 MB  0.9560   4.0 s  (22)
///
/// Other quantisation by variance, a look ahead of 40 and other partitions gain nothing or less
/// than they cost.
void chooseOwnSettings(AVDictionary** settings) {
    libav()->av_dict_set(settings, "preset", "veryfast", 0);
    libav()->av_dict_set(
        settings, "x264-params",
        "subme=1:ref=3:rc-lookahead=15:qcomp=0.5:chroma-qp-offset=-3:deblock=-2,-2:"
        "no-dct-decimate=1",
        0);
}

/// For encoders that know no constant quality: a fifth of a bit for each pixel.
std::int64_t plentifulBitRate(int width, int height, std::int32_t timescale) {
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
        while (last != first && last[-1] == 0) { // no unit ends with a zero byte
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

/// Profiles whose configuration record tells the chroma format and the bit depths as well.
bool isHighProfile(unsigned profile) {
    return profile == 100 || profile == 110 || profile == 122 || profile == 144;
}

/// The threads that the work starts give way; the one that waits here does not, nor what it starts
/// later.
void onGivingWay(const std::function<void()>& work) {
    std::thread thread = startThread([&work] {
        giveWayToOtherThreads();
        work();
    });
    if (thread.joinable()) {
        thread.join();
    } else {
        work();
    }
}

} // namespace

void FrameDeleter::operator()(AVFrame* frame) const {
    libav()->av_frame_free(&frame);
}

FramePointer makeFrame(int width, int height) {
    FramePointer frame(libav() == nullptr ? nullptr : libav()->av_frame_alloc());
    if (!frame) {
        return nullptr;
    }
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    frame->color_range = AVCOL_RANGE_MPEG;
    frame->color_primaries = AVCOL_PRI_BT709;
    frame->color_trc = AVCOL_TRC_BT709;
    frame->colorspace = AVCOL_SPC_BT709;
    frame->chroma_location = AVCHROMA_LOC_LEFT;
    return libav()->av_frame_get_buffer(frame.get(), 0) == 0 ? std::move(frame) : nullptr;
}

bool isFrameUnshared(const AVFrame& frame) {
    // The parameter has lacked its const in some versions of the library.
    return libav()->av_frame_is_writable(const_cast<AVFrame*>(&frame)) > 0;
}

void H264Encoder::ContextDeleter::operator()(AVCodecContext* context) const {
    libav()->avcodec_free_context(&context);
}

void H264Encoder::PacketDeleter::operator()(AVPacket* packet) const {
    libav()->av_packet_free(&packet);
}

std::optional<NSError> H264Encoder::availability(const MovieOptions& options) {
    if (!findEncoders(options.encoder).empty()) {
        return std::nullopt;
    }
    if (libav() == nullptr) {
        return movieError(AVErrorEncoderNotFound,
                          std::string("The movie cannot be made: ") + libavcodecName + " or " +
                              libavutilName +
                              " is not on this system. Install libavcodec with libx264");
    }
    const std::string wanted = options.encoder.empty() ? "" : " \"" + options.encoder + "\"";
    return movieError(AVErrorEncoderNotFound,
                      "The movie cannot be made: there is no H.264 encoder" + wanted +
                          " on this system. Install libavcodec with libx264");
}

H264Encoder::H264Encoder(MovieOptions options) : options_(std::move(options)) {}

H264Encoder::~H264Encoder() = default;

std::optional<NSError> H264Encoder::open(int width, int height, std::int32_t timescale) {
    std::optional<NSError> firstError;
    for (const AVCodec* codec : findEncoders(options_.encoder)) {
        const auto error = openWith(*codec, width, height, timescale);
        if (!error) {
            return std::nullopt;
        }
        if (!firstError) {
            firstError = error;
        }
    }
    return firstError ? firstError : availability(options_);
}

std::optional<NSError> H264Encoder::openWith(const AVCodec& codec, int width, int height,
                                             std::int32_t timescale) {
    std::unique_ptr<AVCodecContext, ContextDeleter> context(
        libav()->avcodec_alloc_context3(&codec));
    packet_.reset(libav()->av_packet_alloc());
    if (!context || !packet_) {
        return encodingError(AVERROR(ENOMEM));
    }
    describePictures(*context, width, height, timescale);
    // Its messages are for developers; what fails is told by the results.
    context->log_level_offset = AV_LOG_TRACE;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->thread_count = options_.threads;

    AVDictionary* settings = nullptr;
    if (std::string_view(codec.name) == "libx264") {
        char factor[32];
        std::snprintf(factor, sizeof factor, "%.3f", options_.constantRateFactor);
        if (options_.preset.empty()) {
            chooseOwnSettings(&settings);
        } else {
            libav()->av_dict_set(&settings, "preset", options_.preset.c_str(), 0);
        }
        libav()->av_dict_set(&settings, "crf", factor, 0);
    } else {
        context->bit_rate = plentifulBitRate(width, height, timescale);
    }
    int result = 0;
    const auto open = [&] { result = libav()->avcodec_open2(context.get(), &codec, &settings); };
    if (options_.givesWay) {
        onGivingWay(open);
    } else {
        open();
    }
    libav()->av_dict_free(&settings);
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

std::optional<NSError> H264Encoder::encode(AVFrame& frame, std::int64_t time, const Sink& sink) {
    frame.pts = time;
    frame.pict_type = AV_PICTURE_TYPE_NONE;
    return send(&frame, sink);
}

std::optional<NSError> H264Encoder::finish(const Sink& sink) {
    return send(nullptr, sink);
}

std::optional<NSError> H264Encoder::send(const AVFrame* frame, const Sink& sink) {
    int result = libav()->avcodec_send_frame(context_.get(), frame);
    if (result == AVERROR(EAGAIN)) {
        if (auto error = receive(sink)) {
            return error;
        }
        result = libav()->avcodec_send_frame(context_.get(), frame);
    }
    if (result < 0) {
        return encodingError(result);
    }
    return receive(sink);
}

std::optional<NSError> H264Encoder::receive(const Sink& sink) {
    while (true) {
        const int result = libav()->avcodec_receive_packet(context_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return std::nullopt;
        }
        if (result < 0) {
            return encodingError(result);
        }
        repackage();
        libav()->av_packet_unref(packet_.get());
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

/// Parameter sets belong into the configuration record, not among the pictures.
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
