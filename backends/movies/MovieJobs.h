#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include "backends/movies/MovieObserver.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

class MovieJob;

/// Registry of the active jobs; dispatches their completion callbacks. Any thread.
///
/// Shared by the jobs' threads, so it may outlive the `Movies` that made it. After `close` it calls
/// neither the observer nor any callback.
class MovieJobs {
public:
    using Finished = std::function<void(std::optional<NSError>)>;

    explicit MovieJobs(MovieObserver& observer) : observer_(&observer) {}
    MovieJobs(const MovieJobs&) = delete;
    MovieJobs& operator=(const MovieJobs&) = delete;

    /// Held while a movie is being created, so that `abandonAll` and `end` miss none.
    std::unique_lock<std::mutex> lockCreation() { return std::unique_lock(creation_); }

    /// `abandonAll` or `end` was called: no movie may begin. Requires the creation lock.
    bool isEnded() const;

    void add(const std::string& path, const std::shared_ptr<MovieJob>& job);

    /// See `Movies::whenFinished`.
    bool whenFinished(const std::string& path, Finished callback);

    /// Removes an ended job and calls its callbacks with the outcome.
    void ended(const MovieJob& job, const std::optional<NSError>& error);

    /// Cancels every unfinished movie; none may begin. Waits for nothing.
    void abandonAll();
    /// See `Movies::end`.
    void end(std::optional<std::chrono::milliseconds> timeout);

    /// Waits for calls in progress. No call begins afterwards.
    void close();

    /// Calls `call` with the observer, unless closed.
    void report(const std::function<void(MovieObserver&)>& call);

private:
    struct Entry {
        std::string path;
        const MovieJob* identity;
        std::weak_ptr<MovieJob> job;
        std::vector<Finished> callbacks;
    };

    std::mutex creation_;

    std::vector<std::shared_ptr<MovieJob>> endCreation();

    mutable std::mutex mutex_; // guards the next two
    std::condition_variable changed_;
    std::vector<Entry> entries_;
    bool isEnded_ = false;

    std::shared_mutex calls_; // held shared during callbacks; guards observer_
    MovieObserver* observer_;
};

} // namespace vistrane
