#include "backends/movies/MovieJobs.h"

#include <algorithm>
#include <utility>

#include "backends/movies/MovieJob.h"

namespace vistrane {

bool MovieJobs::isEnded() const {
    const std::lock_guard lock(mutex_);
    return isEnded_;
}

void MovieJobs::add(const std::string& path, const std::shared_ptr<MovieJob>& job) {
    const std::lock_guard lock(mutex_);
    entries_.push_back({path, job.get(), job, {}});
}

bool MovieJobs::whenFinished(const std::string& path, Finished callback) {
    const std::lock_guard lock(mutex_);
    for (Entry& entry : entries_) {
        if (entry.path == path) {
            entry.callbacks.push_back(std::move(callback));
            return true;
        }
    }
    return false;
}

void MovieJobs::ended(const MovieJob& job, const std::optional<NSError>& error) {
    std::vector<Finished> callbacks;
    {
        const std::lock_guard lock(mutex_);
        const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                        [&job](const Entry& e) { return e.identity == &job; });
        if (entry == entries_.end()) {
            return;
        }
        callbacks = std::move(entry->callbacks);
        entries_.erase(entry);
    }
    for (const Finished& callback : callbacks) {
        report([&](MovieObserver&) { callback(error); });
    }
}

void MovieJobs::abandonAll() {
    std::vector<std::shared_ptr<MovieJob>> jobs;
    {
        const auto creation = lockCreation();
        const std::lock_guard lock(mutex_);
        isEnded_ = true;
        for (const Entry& entry : entries_) {
            if (auto job = entry.job.lock()) {
                jobs.push_back(std::move(job));
            }
        }
    }
    for (const auto& job : jobs) {
        job->abandon();
    }
}

void MovieJobs::close() {
    const std::lock_guard lock(calls_);
    observer_ = nullptr;
}

void MovieJobs::report(const std::function<void(MovieObserver&)>& call) {
    const std::shared_lock lock(calls_);
    if (observer_ != nullptr) {
        call(*observer_);
    }
}

} // namespace vistrane
