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
#include "backends/movies/MovieObserver.h"
#include "backends/movies/MovieOptions.h"
#include "backends/movies/VideoEncoder.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Size and timescale of the track. Known after the first pictures.
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
/// The thread keeps the job alive until it ends. It is never joined, because the process may end at
/// any moment; that leaves a hidden file, which the next movie in that folder removes. Any thread,
/// unless a method says otherwise.
class MovieJob : public std::enable_shared_from_this<MovieJob> {
public:
    MovieJob(std::string path, std::unique_ptr<MovieFile> file, const EncoderModule& module,
             MovieOptions options, std::shared_ptr<MovieJobs> jobs);
    MovieJob(const MovieJob&) = delete;
    MovieJob& operator=(const MovieJob&) = delete;

    /// Starts the thread. Returns false if the system refuses one; the job has then failed.
    bool start();

    /// Call before the first `push`.
    void setShape(const TrackShape& shape);

    /// A frame to fill and push, of the shape's size rounded up to even. Null if there is not
    /// enough memory.
    std::unique_ptr<VideoFrame> takeFrame(int width, int height);

    /// Waits for room in the queue for up to 0.1 s. Returns whether there is room; also true if the
    /// job has failed or was cancelled, because `push` then refuses immediately.
    bool waitForRoom();

    /// Waits for room and queues a picture. Ticks must increase. Returns an error if the job takes
    /// no pictures.
    std::optional<NSError> push(std::unique_ptr<VideoFrame> frame, std::int64_t ticks);

    /// Only the first failure is kept.
    void fail(NSError reason);
    std::optional<NSError> failure() const;

    /// The writer's `error`, unless something has failed.
    void setLastRefusal(const NSError& reason);
    std::optional<NSError> lastError() const;

    /// Call after the last picture. Returns immediately; later calls `handler`, then the observer,
    /// then the callbacks of `MovieJobs`. A second call does nothing.
    void finish(std::function<void()> handler);

    bool isFinishing() const;

    /// Cancels the movie: stops the work and removes the hidden file at once.
    void abandon();

    MovieJobs& jobs() { return *jobs_; }
    const std::string& path() const { return path_; }

private:
    struct Item {
        std::unique_ptr<VideoFrame> frame;
        std::int64_t ticks = 0;
    };

    // Called on the job's thread, in this order.
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
    FinishedMovie finished_;
    bool hasEndedEarly_ = false; // concluded before `finish`

    // Used by the job's thread only.
    std::unique_ptr<VideoEncoder> encoder_;
    MovieTrack track_;
};

} // namespace vistrane
