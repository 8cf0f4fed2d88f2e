#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include "backends/posix/MediaObserver.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

class MovieJob;

/// The movies that are on their way, and the one road by which they tell how it went. Any thread.
///
/// It is shared with the writers' threads and so outlives its owner, but not the other way round:
/// after `close` nothing calls out any more.
class MovieJobs {
public:
    using Finished = std::function<void(std::optional<NSError>)>;

    explicit MovieJobs(MediaObserver& observer) : observer_(&observer) {}
    MovieJobs(const MovieJobs&) = delete;
    MovieJobs& operator=(const MovieJobs&) = delete;

    /// Held while a movie is being created, so that giving all up misses none.
    std::unique_lock<std::mutex> lockCreation() { return std::unique_lock(creation_); }

    /// All are given up and none may begin. Ask with the creation locked.
    bool isEnded() const;

    void add(const std::string& path, const std::shared_ptr<MovieJob>& job);

    /// See `Movies::whenFinished`.
    bool whenFinished(const std::string& path, Finished callback);

    /// The job has ended, well or not: it leaves the list, and those who asked are told.
    void ended(const MovieJob& job, const std::optional<NSError>& error);

    /// See `Movies::abandonAll`.
    void abandonAll();

    /// Waits for calls that are under way, and makes none from then on.
    void close();

    /// Calls `call` with the observer, unless closed.
    void tell(const std::function<void(MediaObserver&)>& call);

private:
    struct Entry {
        std::string path;
        const MovieJob* identity;
        std::weak_ptr<MovieJob> job;
        std::vector<Finished> callbacks;
    };

    std::mutex creation_;

    mutable std::mutex mutex_; // guards the next two
    std::vector<Entry> entries_;
    bool isEnded_ = false;

    std::shared_mutex calls_; // shared by calls to the outside; guards observer_
    MediaObserver* observer_;
};

} // namespace vistrane
