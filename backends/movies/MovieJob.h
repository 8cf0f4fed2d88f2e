#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "backends/movies/MovieFile.h"
#include "backends/movies/MovieIndex.h"
#include "backends/movies/MovieJobs.h"
#include "backends/movies/MovieOptions.h"
#include "backends/movies/VideoEncoder.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Size and timescale of the track, known with the first pictures.
struct TrackShape {
    /// In pixels, each at least 1.
    std::size_t width = 0;
    std::size_t height = 0;
    /// Ticks per second.
    std::int32_t timescale = 0;
};

/// Makes one movie file: a short queue of converted pictures, and a thread that encodes them,
/// writes the file and reports the outcome.
///
/// The thread keeps the job alive until it has ended, and is never joined: the process may end at
/// any moment. What is left then is a hidden file, which the next movie in that folder removes.
/// Any thread, unless a method says otherwise.
class MovieJob : public std::enable_shared_from_this<MovieJob> {
public:
    MovieJob(std::string path, std::unique_ptr<MovieFile> file, const EncoderModule& module,
             MovieOptions options, std::shared_ptr<MovieJobs> jobs);
    MovieJob(const MovieJob&) = delete;
    MovieJob& operator=(const MovieJob&) = delete;

    /// Starts the thread. False when the system grants none: the job has failed then.
    bool start();

    /// Before the first `push`.
    void setShape(const TrackShape& shape);

    /// A frame to fill and push, of the shape's size rounded up to even. Null without memory.
    std::unique_ptr<VideoFrame> takeFrame(int width, int height);

    /// Waits for room in the queue, for a tenth of a second at most. Whether there is some; true
    /// also for a job that has failed or was cancelled, where a push is refused.
    bool waitForRoom();

    /// Queues a picture, and waits for room. Ticks rise. An error when the job takes no pictures.
    std::optional<NSError> push(std::unique_ptr<VideoFrame> frame, std::int64_t ticks);

    /// The first failure is kept.
    void fail(NSError reason);
    std::optional<NSError> failure() const;

    /// The writer's `error` as long as nothing has failed.
    void setLastRefusal(const NSError& reason);
    std::optional<NSError> lastError() const;

    /// No picture follows. Returns at once; later calls `handler`, then the observer, then the
    /// callbacks of `MovieJobs`. A second call does nothing.
    void finish(std::function<void()> handler);

    /// Cancels the movie: stops the work and removes the hidden file at once.
    void abandon();

    MovieJobs& jobs() { return *jobs_; }

private:
    struct Item {
        std::unique_ptr<VideoFrame> frame;
        std::int64_t ticks = 0;
    };

    // On the thread, in the order of the calls.
    void run();
    std::optional<Item> next();
    std::optional<NSError> encode(Item& item);
    std::optional<NSError> openEncoder();
    std::optional<NSError> store(const EncodedPicture& picture);
    void recycle(std::unique_ptr<VideoFrame> frame);
    void conclude();
    std::optional<NSError> completeFile();
    void reportOutcome(const std::optional<NSError>& error);
    void callHandlerAndObserver();

    bool isClosed() const { return failure_ || isAbandoned_ || isFinishing_; }
    NSError emptyError() const;

    const std::string path_;
    const EncoderModule& module_;
    const MovieOptions options_;
    const std::shared_ptr<MovieJobs> jobs_;
    const std::unique_ptr<MovieFile> file_;

    mutable std::mutex mutex_; // guards the following
    std::condition_variable changed_;
    TrackShape shape_;
    std::deque<Item> queue_;
    std::vector<std::unique_ptr<VideoFrame>> idleFrames_;
    std::optional<NSError> failure_;
    std::optional<NSError> lastRefusal_;
    std::function<void()> handler_;
    bool isStarted_ = false;
    bool isFinishing_ = false;
    bool isAbandoned_ = false;
    bool isConcluded_ = false;
    std::optional<NSError> outcome_;
    bool hasEndedEarly_ = false; // concluded before `finish`

    // The thread's own.
    std::unique_ptr<VideoEncoder> encoder_;
    MovieTrack track_;
};

} // namespace vistrane
