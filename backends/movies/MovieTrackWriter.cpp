#include "backends/movies/MovieTrackWriter.h"

#include <new>
#include <string>
#include <utility>

#include "backends/movies/movie_errors.h"
#include "backends/pictures/PixelBuffer.h"

namespace vistrane {

namespace {

PictureView viewOf(const PixelBuffer& buffer) {
    return {buffer.bytes(), buffer.width(), buffer.height(), buffer.bytesPerRow()};
}

} // namespace

MovieTrackWriter::MovieTrackWriter(std::shared_ptr<MovieJob> job, std::int64_t width,
                                   std::int64_t height)
    : job_(std::move(job)), width_(width), height_(height) {}

std::optional<NSError> MovieTrackWriter::sizeError(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t largest{VideoEncoder::largestSide};
    if (width <= largest && height <= largest) {
        return std::nullopt;
    }
    const std::string limit = std::to_string(largest);
    return movieError(AVErrorUnknown, "A movie of " + std::to_string(width) + " x " +
                                          std::to_string(height) +
                                          " pixels cannot be made: the limit is " + limit + " x " +
                                          limit + ". Use smaller frames");
}

std::optional<NSError> MovieTrackWriter::append(CVPixelBufferRef buffer, CMTime time) {
    std::optional<NSError> error;
    try {
        error = take(buffer, time);
    } catch (const std::bad_alloc&) {
        error = memoryError("the picture");
    }
    if (error) {
        job_->setLastRefusal(*error);
    }
    job_->jobs().report([&](MovieObserver& observer) {
        error ? observer.pictureWasRefused(job_->path(), *error) : observer.pictureWasAppended();
    });
    return error;
}

std::optional<NSError> MovieTrackWriter::take(CVPixelBufferRef buffer, CMTime time) {
    if (auto error = stateError()) {
        return error;
    }
    clock_.noteRate(time);
    if (buffer == nullptr) {
        return movieError(AVErrorUnknown, "There is no picture to append: the frame could not be "
                                          "read, or there is not enough memory for it. Check its "
                                          "file");
    }
    const PixelBuffer& pixels = *PixelBuffer::from(buffer);
    if (pixels.damage()) {
        return pixels.damage();
    }
    const PictureView picture = viewOf(pixels);
    if (auto error = takeSize(picture)) {
        return error;
    }
    std::unique_ptr<VideoFrame> frame = convert(picture);
    if (!frame) {
        return memoryError("the picture");
    }
    const TrackClock::Reading reading = clock_.take(time);
    if (reading.error) {
        return reading.error;
    }
    if (!clock_.timescale()) {
        heldFrame_ = std::move(frame);
        return std::nullopt;
    }
    if (auto error = pushHeldFrame(*clock_.timescale())) {
        return error;
    }
    return job_->push(std::move(frame), reading.ticks);
}

std::optional<NSError> MovieTrackWriter::stateError() const {
    if (auto error = job_->failure()) {
        return error;
    }
    if (!isBegun_ || isEnded_) {
        return movieError(AVErrorUnknown, isEnded_ ? "The movie takes no more pictures: it is "
                                                     "being finished"
                                                   : "The movie takes no pictures yet: its writing "
                                                     "has not been started");
    }
    return std::nullopt;
}

std::optional<NSError> MovieTrackWriter::takeSize(const PictureView& picture) {
    if (fitter_) {
        return std::nullopt;
    }
    const bool isOpen = width_ <= 0 || height_ <= 0;
    const auto width = isOpen ? static_cast<std::int64_t>(picture.width) : width_;
    const auto height = isOpen ? static_cast<std::int64_t>(picture.height) : height_;
    if (auto error = sizeError(width, height)) {
        return error;
    }
    width_ = width;
    height_ = height;
    fitter_.emplace(static_cast<std::size_t>(width), static_cast<std::size_t>(height));
    return std::nullopt;
}

std::unique_ptr<VideoFrame> MovieTrackWriter::convert(const PictureView& picture) {
    std::unique_ptr<VideoFrame> frame = job_->takeFrame(static_cast<int>(width_ + width_ % 2),
                                                        static_cast<int>(height_ + height_ % 2));
    if (frame) {
        convertToPlanar709(fitter_->fit(picture), frame->planes());
    }
    return frame;
}

std::optional<NSError> MovieTrackWriter::pushHeldFrame(std::int32_t timescale) {
    if (!isShapeSet_) {
        job_->setShape(
            {static_cast<std::size_t>(width_), static_cast<std::size_t>(height_), timescale});
        isShapeSet_ = true;
    }
    return heldFrame_ ? job_->push(std::move(heldFrame_), 0) : std::nullopt;
}

bool MovieTrackWriter::isReady() {
    return !isBegun_ || isEnded_ || job_->waitForRoom();
}

void MovieTrackWriter::finish(std::function<void()> handler) {
    end();
    if (heldFrame_) {
        if (auto error = pushHeldFrame(clock_.finalTimescale())) {
            job_->setLastRefusal(*error);
        }
    }
    job_->finish(std::move(handler));
}

} // namespace vistrane
