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
    changed_.notify_all();
    for (const Finished& callback : callbacks) {
        report([&](MovieObserver&) { callback(error); });
    }
}

/// No movie begins from now on. Returns the active jobs.
std::vector<std::shared_ptr<MovieJob>> MovieJobs::endCreation() {
    const auto creation = lockCreation();
    const std::lock_guard lock(mutex_);
    isEnded_ = true;
    std::vector<std::shared_ptr<MovieJob>> jobs;
    for (const Entry& entry : entries_) {
        if (auto job = entry.job.lock()) {
            jobs.push_back(std::move(job));
        }
    }
    return jobs;
}

void MovieJobs::abandonAll() {
    for (const auto& job : endCreation()) {
        job->abandon();
    }
}

void MovieJobs::end(std::optional<std::chrono::milliseconds> timeout) {
    std::vector<std::shared_ptr<MovieJob>> finishing = endCreation();
    std::erase_if(finishing, [](const std::shared_ptr<MovieJob>& job) {
        const bool isUnfinished = !job->isFinishing();
        if (isUnfinished) {
            job->abandon();
        }
        return isUnfinished;
    });
    const auto haveEnded = [&] {
        return std::none_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
            return std::any_of(finishing.begin(), finishing.end(),
                               [&](const auto& job) { return job.get() == entry.identity; });
        });
    };
    {
        std::unique_lock lock(mutex_);
        if (timeout) {
            changed_.wait_for(lock, *timeout, haveEnded);
        } else {
            changed_.wait(lock, haveEnded);
        }
    }
    for (const auto& job : finishing) {
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
