#include "backends/movies/MovieJob.h"

#include <chrono>
#include <csignal>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "backends/movies/movie_errors.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// Pictures that wait for the encoder: enough to keep it busy, few enough to keep memory flat.
constexpr std::size_t queueLimit = 3;
constexpr auto roomPatience = std::chrono::milliseconds(100);

/// No signal reaches the threads that are started during its life: they are the main thread's
/// business. A file size limit, whose signal goes to the thread that writes, is then an error
/// number like every other.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        ::sigfillset(&all);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP}) {
            ::sigdelset(&all, fault);
        }
        ::pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

int evenUp(std::size_t side) {
    return static_cast<int>(side + side % 2);
}

NSError memoryError() {
    return movieError(AVErrorUnknown, "There is not enough memory for the movie. Use smaller "
                                      "frames, or close some programs");
}

} // namespace

MovieJob::MovieJob(std::string path, std::unique_ptr<MovieFile> file, MovieOptions options,
                   std::shared_ptr<MovieJobs> jobs)
    : path_(std::move(path)), options_(std::move(options)), jobs_(std::move(jobs)),
      file_(std::move(file)) {}

bool MovieJob::start() {
    {
        const std::lock_guard lock(mutex_);
        isStarted_ = true;
    }
    try {
        const BlockedSignals blocked;
        std::thread([self = shared_from_this()] { self->run(); }).detach();
        return true;
    } catch (const std::system_error&) {
        const std::lock_guard lock(mutex_);
        isStarted_ = false;
        failure_ = movieError(AVErrorUnknown, "The system gives no thread to write the movie with. "
                                              "Close some programs and compile again");
        return false;
    }
}

void MovieJob::setShape(const TrackShape& shape) {
    const std::lock_guard lock(mutex_);
    shape_ = shape;
}

FramePointer MovieJob::takeFrame(int width, int height) {
    {
        const std::lock_guard lock(mutex_);
        if (!idleFrames_.empty()) {
            FramePointer frame = std::move(idleFrames_.back());
            idleFrames_.pop_back();
            return frame;
        }
    }
    return makeFrame(width, height);
}

bool MovieJob::waitForRoom() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, roomPatience,
                             [this] { return takesNone() || queue_.size() < queueLimit; });
}

std::optional<NSError> MovieJob::push(FramePointer frame, std::int64_t ticks) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return takesNone() || queue_.size() < queueLimit; });
    if (failure_) {
        return failure_;
    }
    if (takesNone()) {
        return givenUpError();
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
    file_->giveUp();
    changed_.notify_all();
}

std::optional<NSError> MovieJob::failure() const {
    const std::lock_guard lock(mutex_);
    return failure_ || !isAbandoned_ ? failure_ : givenUpError();
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
        isLate = hasEndedUnasked_;
    }
    changed_.notify_all();
    if (isLate) {
        tellFinished();
    } else if (isOurs) {
        conclude();
    }
}

void MovieJob::abandon() {
    bool isOurs = false;
    {
        const std::lock_guard lock(mutex_);
        isAbandoned_ = true;
        queue_.clear();
        isOurs = !isStarted_ && !isFinishing_;
    }
    file_->giveUp();
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
        fail(memoryError());
        next();
    }
    conclude();
}

/// Nothing at the end: when all is encoded, or nothing more is to be.
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
    encoder_ = std::make_unique<H264Encoder>(options_);
    if (auto error = encoder_->open(evenUp(shape.width), evenUp(shape.height), shape.timescale)) {
        return error;
    }
    const auto head = movieFileHead();
    return file_->write(head.data(), head.size());
}

std::optional<NSError> MovieJob::store(const EncodedPicture& picture) {
    track_.samples.push_back({file_->size(), static_cast<std::uint32_t>(picture.bytes.size()),
                              picture.time, picture.isKey});
    return file_->write(picture.bytes.data(), picture.bytes.size());
}

void MovieJob::recycle(FramePointer frame) {
    const std::lock_guard lock(mutex_);
    if (idleFrames_.size() < queueLimit && isFrameUnshared(*frame)) {
        idleFrames_.push_back(std::move(frame));
    }
}

/// The end of the job, however it comes. Once.
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
            error = memoryError();
        }
    }
    if (error) {
        fail(*error);
    }
    encoder_.reset();
    track_ = {};
    tellOutcome(error);
}

std::optional<NSError> MovieJob::completeFile() {
    {
        const std::lock_guard lock(mutex_);
        if (isAbandoned_) {
            return givenUpError();
        }
        if (!encoder_) {
            return emptyError();
        }
    }
    if (auto error =
            encoder_->finish([this](const EncodedPicture& picture) { return store(picture); })) {
        return error;
    }
    track_.configuration = encoder_->configuration();
    if (track_.samples.empty() || track_.configuration.empty()) {
        return movieError(AVErrorUnknown, "The H.264 encoder gave no usable picture. Install "
                                          "libavcodec with libx264");
    }
    const auto mediaSize = mediaBoxSize(file_->size());
    const auto index = movieBox(track_);
    if (auto error = file_->write(index.data(), index.size())) {
        return error;
    }
    if (auto error = file_->writeAt(mediaBoxSizeOffset, mediaSize.data(), mediaSize.size())) {
        return error;
    }
    return file_->giveName();
}

void MovieJob::tellOutcome(const std::optional<NSError>& error) {
    bool wasAskedToFinish = false;
    {
        const std::lock_guard lock(mutex_);
        outcome_ = error;
        wasAskedToFinish = isFinishing_;
        hasEndedUnasked_ = !isFinishing_;
    }
    if (wasAskedToFinish) {
        tellFinished();
    }
    jobs_->ended(*this, error);
}

void MovieJob::tellFinished() {
    std::function<void()> handler;
    std::optional<NSError> error;
    {
        const std::lock_guard lock(mutex_);
        handler = std::exchange(handler_, nullptr);
        error = outcome_;
    }
    jobs_->tell([&](MediaObserver& observer) {
        if (handler) {
            handler();
        }
        if (error) {
            observer.movieFailed(path_, *error);
        } else {
            observer.movieIsWhole(path_);
        }
    });
}

NSError MovieJob::givenUpError() const {
    return movieError(AVErrorOperationCancelled, "The movie was given up before it was whole (" +
                                                     shownText(path_) + "). Compile again");
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
