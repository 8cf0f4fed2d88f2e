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

#include "backends/movies/H264Encoder.h"
#include "backends/movies/MovieFile.h"
#include "backends/movies/MovieIndex.h"
#include "backends/movies/MovieJobs.h"
#include "backends/movies/MovieOptions.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What the track is to be; known with the first pictures.
struct TrackShape {
    /// In pixels, each at least 1.
    std::size_t width = 0;
    std::size_t height = 0;
    /// Ticks per second.
    std::int32_t timescale = 0;
};

/// The making of one movie file: a short queue of converted pictures, and a thread that encodes
/// them, writes the file and tells how it went.
///
/// The thread keeps the job alive until it has ended. Nobody waits for the thread: the process may
/// end at any moment, and what is left then is a hidden file that the next movie there removes.
/// Any thread, except where a line says more.
class MovieJob : public std::enable_shared_from_this<MovieJob> {
public:
    MovieJob(std::string path, std::unique_ptr<MovieFile> file, MovieOptions options,
             std::shared_ptr<MovieJobs> jobs);
    MovieJob(const MovieJob&) = delete;
    MovieJob& operator=(const MovieJob&) = delete;

    /// Starts the thread. False when the system gives none: the job has failed then.
    bool start();

    /// Before the first `push`.
    void setShape(const TrackShape& shape);

    /// A frame of the shape's size rounded up to even, to be filled and pushed. Null without
    /// memory.
    FramePointer takeFrame(int width, int height);

    /// Waits for room in the queue, a tenth of a second at most, and returns whether there is
    /// some. There always is when the job has failed or was given up: a push is refused then.
    bool waitForRoom();

    /// Queues a picture; waits for room. Ticks rise. An error when the job takes none.
    std::optional<NSError> push(FramePointer frame, std::int64_t ticks);

    /// The first failure stays.
    void fail(NSError reason);
    std::optional<NSError> failure() const;

    /// What `error` of the writer tells when nothing has failed.
    void setLastRefusal(const NSError& reason);
    std::optional<NSError> lastError() const;

    /// No picture comes any more. Returns at once; `handler` is called, then the observer, then
    /// those who asked the jobs. A second call is passed over.
    void finish(std::function<void()> handler);

    /// Stops the work and removes the hidden file at once.
    void abandon();

    MovieJobs& jobs() { return *jobs_; }

private:
    struct Item {
        FramePointer frame;
        std::int64_t ticks = 0;
    };

    // The thread, in running order.
    void run();
    std::optional<Item> next();
    std::optional<NSError> encode(Item& item);
    std::optional<NSError> openEncoder();
    std::optional<NSError> store(const EncodedPicture& picture);
    void recycle(FramePointer frame);
    void conclude();
    std::optional<NSError> completeFile();
    void tellOutcome(const std::optional<NSError>& error);
    void tellFinished();

    bool takesNone() const { return failure_ || isAbandoned_ || isFinishing_; }
    NSError givenUpError() const;
    NSError emptyError() const;

    const std::string path_;
    const MovieOptions options_;
    const std::shared_ptr<MovieJobs> jobs_;
    const std::unique_ptr<MovieFile> file_;

    mutable std::mutex mutex_; // guards the following
    std::condition_variable changed_;
    TrackShape shape_;
    std::deque<Item> queue_;
    std::vector<FramePointer> idleFrames_;
    std::optional<NSError> failure_;
    std::optional<NSError> lastRefusal_;
    std::function<void()> handler_;
    bool isStarted_ = false;
    bool isFinishing_ = false;
    bool isAbandoned_ = false;
    bool isConcluded_ = false;
    std::optional<NSError> outcome_;
    bool hasEndedUnasked_ = false; // given up before it was asked to finish

    // Of the thread alone.
    std::unique_ptr<H264Encoder> encoder_;
    MovieTrack track_;
};

} // namespace vistrane
