#include "backends/movies/MovieWriter.h"

#include <string_view>
#include <utility>
#include <variant>

#include "backends/movies/movie_errors.h"

namespace vistrane {

namespace {

const NSDictionaryValue* find(const NSDictionary& dictionary, std::string_view key) {
    for (const auto& [name, value] : dictionary) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

std::string textFor(const NSDictionary& dictionary, std::string_view key,
                    std::string_view otherwise) {
    const NSDictionaryValue* value = find(dictionary, key);
    const auto* text = value ? std::get_if<std::string>(value) : nullptr;
    return text ? *text : std::string(otherwise);
}

std::int64_t numberFor(const NSDictionary& dictionary, std::string_view key) {
    const NSDictionaryValue* value = find(dictionary, key);
    const auto* number = value ? std::get_if<std::int64_t>(value) : nullptr;
    return number ? *number : 0;
}

} // namespace

MovieInput::MovieInput(AVMediaType mediaType, const NSDictionary& outputSettings)
    : isVideo_(mediaType == AVMediaTypeVideo),
      codec_(textFor(outputSettings, AVVideoCodecKey, AVVideoCodecTypeH264)),
      scalingMode_(textFor(outputSettings, AVVideoScalingModeKey, AVVideoScalingModeResizeAspect)),
      width_(numberFor(outputSettings, AVVideoWidthKey)),
      height_(numberFor(outputSettings, AVVideoHeightKey)) {}

bool MovieInput::isReadyForMoreMediaData() {
    // Without a track every append is refused, so there is nothing to wait for.
    return !track_ || track_->isReady();
}

void MovieInput::markAsFinished() {
    if (track_) {
        track_->end();
    }
}

std::optional<NSError> MovieInput::attach(std::shared_ptr<MovieJob> job) {
    if (track_) {
        return movieError(AVErrorUnknown, "A track can be added to one movie only");
    }
    track_ = std::make_unique<MovieTrackWriter>(std::move(job), width_, height_);
    return settingsError();
}

std::optional<NSError> MovieInput::settingsError() const {
    if (!isVideo_ || codec_ != AVVideoCodecTypeH264 ||
        scalingMode_ != AVVideoScalingModeResizeAspect) {
        return movieError(AVErrorUnknown, "A movie has one H.264 video track whose pictures are "
                                          "fitted in with their aspect kept, and nothing else");
    }
    return MovieTrackWriter::sizeError(width_, height_);
}

MovieAdaptor::MovieAdaptor(std::shared_ptr<AVAssetWriterInput> input) : input_(std::move(input)) {}

bool MovieAdaptor::appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) {
    MovieTrackWriter* const writer = track();
    return writer != nullptr && !writer->append(buffer, time);
}

CVPixelBufferPoolRef MovieAdaptor::pixelBufferPool() {
    const MovieTrackWriter* const writer = track();
    return writer != nullptr && writer->isBegun() ? &pool_ : nullptr;
}

MovieTrackWriter* MovieAdaptor::track() {
    auto* const input = dynamic_cast<MovieInput*>(input_.get());
    return input != nullptr ? input->track() : nullptr;
}

MovieWriter::~MovieWriter() {
    if (!isFinishing_) {
        job_->abandon();
    }
}

void MovieWriter::addInput(std::shared_ptr<AVAssetWriterInput> input) {
    auto track = std::dynamic_pointer_cast<MovieInput>(std::move(input));
    if (!track || input_ || isStarted_ || isFinishing_) {
        job_->fail(movieError(AVErrorUnknown, "A movie takes one video track, before its writing "
                                              "is started"));
        return;
    }
    if (auto error = track->attach(job_)) {
        job_->fail(std::move(*error));
    }
    input_ = std::move(track);
}

bool MovieWriter::startWriting() {
    if (isStarted_ || isFinishing_ || !input_ || job_->failure()) {
        return false;
    }
    isStarted_ = job_->start();
    if (isStarted_) {
        input_->track()->begin();
    }
    return isStarted_;
}

void MovieWriter::startSessionAtSourceTime(CMTime time) {
    if (input_) {
        input_->track()->startSession(time);
    }
}

std::optional<NSError> MovieWriter::error() const {
    return job_->lastError();
}

void MovieWriter::finishWritingWithCompletionHandler(std::function<void()> handler) {
    if (isFinishing_) {
        return;
    }
    isFinishing_ = true;
    if (input_) {
        input_->track()->finish(std::move(handler));
    } else {
        job_->finish(std::move(handler));
    }
}

} // namespace vistrane
