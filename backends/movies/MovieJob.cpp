#include "backends/movies/MovieJob.h"

#include <chrono>
#include <ctime>
#include <new>
#include <thread>
#include <utility>

#include "backends/movies/movie_errors.h"
#include "backends/posix/free_memory.h"
#include "backends/posix/threads.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// The longest queue of pictures for the encoder: enough to keep it busy, few enough to bound
/// memory.
constexpr std::size_t queueLimit = 3;
constexpr auto roomTimeout = std::chrono::milliseconds(100);

int evenUp(std::size_t side) {
    return static_cast<int>(side + side % 2);
}

/// Threads that `work` starts inherit the low priority. The waiting thread keeps its own.
void runAtLowPriority(const std::function<void()>& work) {
    std::thread thread = startThread([&work] {
        lowerThreadPriority();
        work();
    });
    if (thread.joinable()) {
        thread.join();
    } else {
        work();
    }
}

} // namespace

MovieJob::MovieJob(std::string path, std::unique_ptr<MovieFile> file, const EncoderModule& module,
                   MovieOptions options, std::shared_ptr<MovieJobs> jobs)
    : path_(std::move(path)), module_(module), options_(std::move(options)), jobs_(std::move(jobs)),
      file_(std::move(file)) {}

bool MovieJob::start() {
    {
        const std::lock_guard lock(mutex_);
        isStarted_ = true;
    }
    // `startDetachedThread` blocks all signals, so exceeding the file size limit, whose signal goes
    // to the writing thread, becomes an error number.
    if (startDetachedThread([self = shared_from_this()] { self->run(); })) {
        return true;
    }
    const std::lock_guard lock(mutex_);
    isStarted_ = false;
    failure_ = movieError(AVErrorUnknown, "The system refuses a thread for writing the movie. "
                                          "Close some programs and compile again");
    return false;
}

void MovieJob::setShape(const TrackShape& shape) {
    const std::lock_guard lock(mutex_);
    shape_ = shape;
}

std::unique_ptr<VideoFrame> MovieJob::takeFrame(int width, int height) {
    {
        const std::lock_guard lock(mutex_);
        if (!idleFrames_.empty()) {
            std::unique_ptr<VideoFrame> frame = std::move(idleFrames_.back());
            idleFrames_.pop_back();
            return frame;
        }
    }
    return module_.makeFrame(width, height);
}

bool MovieJob::waitForRoom() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, roomTimeout,
                             [this] { return isClosed() || queue_.size() < queueLimit; });
}

std::optional<NSError> MovieJob::push(std::unique_ptr<VideoFrame> frame, std::int64_t ticks) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isClosed() || queue_.size() < queueLimit; });
    if (failure_) {
        return failure_;
    }
    if (isClosed()) {
        return cancelledError(path_);
    }
    queue_.push_back({std::move(frame), ticks});
    lock.unlock();
    changed_.notify_all();
    return std::nullopt;
}

void MovieJob::fail(NSError reason) {
    {
        const std::lock_guard lock(mutex_);
        if (!failure_) {
            failure_ = std::move(reason);
        }
        queue_.clear();
    }
    file_->discard();
    changed_.notify_all();
}

std::optional<NSError> MovieJob::failure() const {
    const std::lock_guard lock(mutex_);
    return failure_ || !isAbandoned_ ? failure_ : cancelledError(path_);
}

void MovieJob::setLastRefusal(const NSError& reason) {
    const std::lock_guard lock(mutex_);
    lastRefusal_ = reason;
}

std::optional<NSError> MovieJob::lastError() const {
    const std::lock_guard lock(mutex_);
    return failure_ ? failure_ : lastRefusal_;
}

void MovieJob::finish(std::function<void()> handler) {
    bool isOurs = false;
    bool isLate = false;
    {
        const std::lock_guard lock(mutex_);
        if (isFinishing_) {
            return;
        }
        isFinishing_ = true;
        handler_ = std::move(handler);
        isOurs = !isStarted_;
        isLate = hasEndedEarly_;
    }
    changed_.notify_all();
    if (isLate) {
        callHandlerAndObserver();
    } else if (isOurs) {
        conclude();
    }
}

bool MovieJob::isFinishing() const {
    const std::lock_guard lock(mutex_);
    return isFinishing_;
}

void MovieJob::abandon() {
    bool isOurs = false;
    {
        const std::lock_guard lock(mutex_);
        isAbandoned_ = true;
        queue_.clear();
        isOurs = !isStarted_ && !isFinishing_;
    }
    file_->discard();
    changed_.notify_all();
    if (isOurs) {
        conclude();
    }
}

void MovieJob::run() {
    try {
        while (auto item = next()) {
            if (auto error = encode(*item)) {
                fail(std::move(*error));
            }
        }
    } catch (const std::bad_alloc&) {
        fail(memoryError("the movie"));
        next();
    }
    conclude();
}

/// Nothing if all pictures are encoded or the job was cancelled.
std::optional<MovieJob::Item> MovieJob::next() {
    std::optional<Item> item;
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !queue_.empty() || isFinishing_ || isAbandoned_; });
        if (queue_.empty()) {
            return std::nullopt;
        }
        item = std::move(queue_.front());
        queue_.pop_front();
    }
    changed_.notify_all();
    return item;
}

std::optional<NSError> MovieJob::encode(Item& item) {
    if (!encoder_) {
        if (auto error = openEncoder()) {
            return error;
        }
    }
    auto error = encoder_->encode(*item.frame, item.ticks,
                                  [this](const EncodedPicture& picture) { return store(picture); });
    track_.end = item.ticks + 1;
    recycle(std::move(item.frame));
    return error;
}

std::optional<NSError> MovieJob::openEncoder() {
    TrackShape shape;
    {
        const std::lock_guard lock(mutex_);
        shape = shape_;
    }
    track_.width = static_cast<std::uint16_t>(shape.width);
    track_.height = static_cast<std::uint16_t>(shape.height);
    track_.timescale = shape.timescale;
    encoder_ = module_.makeEncoder(options_);
    std::optional<NSError> error;
    const auto open = [&] {
        error = encoder_->open(evenUp(shape.width), evenUp(shape.height), shape.timescale);
    };
    options_.isLowPriority ? runAtLowPriority(open) : open();
    if (error) {
        return error;
    }
    const auto header = movieFileHeader();
    return file_->write(header.data(), header.size());
}

std::optional<NSError> MovieJob::store(const EncodedPicture& picture) {
    track_.samples.push_back({file_->size(), static_cast<std::uint32_t>(picture.bytes.size()),
                              picture.time, picture.isKey});
    return file_->write(picture.bytes.data(), picture.bytes.size());
}

void MovieJob::recycle(std::unique_ptr<VideoFrame> frame) {
    const std::lock_guard lock(mutex_);
    if (idleFrames_.size() < queueLimit && frame->isWritable()) {
        idleFrames_.push_back(std::move(frame));
    }
}

/// Ends the job with its outcome. Only the first call counts.
void MovieJob::conclude() {
    std::optional<NSError> error;
    {
        const std::lock_guard lock(mutex_);
        if (isConcluded_) {
            return;
        }
        isConcluded_ = true;
        error = failure_;
    }
    if (!error) {
        try {
            error = completeFile();
        } catch (const std::bad_alloc&) {
            error = memoryError("the movie");
        }
    }
    if (error) {
        fail(*error);
    }
    {
        const std::lock_guard lock(mutex_);
        finished_ = {path_, track_.width, track_.height, track_.samples.size(),
                     track_.timescale > 0 ? static_cast<double>(track_.end) / track_.timescale
                                          : 0.0};
        idleFrames_.clear();
    }
    encoder_.reset();
    track_ = {};
    returnFreeMemory();
    reportOutcome(error);
}

std::optional<NSError> MovieJob::completeFile() {
    {
        const std::lock_guard lock(mutex_);
        if (isAbandoned_) {
            return cancelledError(path_);
        }
        if (!encoder_) {
            return emptyError();
        }
    }
    if (auto error =
            encoder_->finish([this](const EncodedPicture& picture) { return store(picture); })) {
        return error;
    }
    track_.created = std::time(nullptr);
    track_.configuration = encoder_->configuration();
    if (track_.samples.empty() || track_.configuration.empty()) {
        return movieError(AVErrorUnknown, "The H.264 encoder delivered no usable picture. Install "
                                          "libavcodec with libx264");
    }
    const auto mediaSize = mediaBoxSize(file_->size());
    const auto index = movieBox(track_);
    if (auto error = file_->write(index.data(), index.size())) {
        return error;
    }
    return file_->publish(mediaBoxSizeOffset, mediaSize);
}

void MovieJob::reportOutcome(const std::optional<NSError>& error) {
    bool wasAskedToFinish = false;
    {
        const std::lock_guard lock(mutex_);
        outcome_ = error;
        wasAskedToFinish = isFinishing_;
        hasEndedEarly_ = !isFinishing_;
    }
    if (wasAskedToFinish) {
        callHandlerAndObserver();
    }
    jobs_->ended(*this, error);
}

void MovieJob::callHandlerAndObserver() {
    std::function<void()> handler;
    std::optional<NSError> error;
    FinishedMovie finished;
    {
        const std::lock_guard lock(mutex_);
        handler = std::exchange(handler_, nullptr);
        error = outcome_;
        finished = finished_;
    }
    jobs_->report([&](MovieObserver& observer) {
        if (handler) {
            handler();
        }
        if (error) {
            observer.movieFailed(path_, *error);
        } else {
            observer.movieIsWhole(finished);
        }
    });
}

NSError MovieJob::emptyError() const {
    std::string text = "No movie was made, because none of its frames could be added (" +
                       shownText(path_) + "). Check the frame files in the project folder";
    if (lastRefusal_) {
        text += ". The last one was refused: " + lastRefusal_->localizedDescription;
    }
    return movieError(AVErrorUnknown, text);
}

} // namespace vistrane
