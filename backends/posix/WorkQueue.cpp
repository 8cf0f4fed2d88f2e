#include "backends/posix/WorkQueue.h"

#include <utility>

namespace vistrane {

WorkQueue::WorkQueue(std::function<void()> wake) : wake_(std::move(wake)) {}

void WorkQueue::async(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        items_.push_back(std::move(work));
    }
    wake();
}

void WorkQueue::wake() {
    if (!woken_.exchange(true)) {
        wake_();
    }
}

std::size_t WorkQueue::size() const {
    const std::lock_guard lock(mutex_);
    return items_.size();
}

void WorkQueue::runWaiting() {
    for (std::size_t left = size(); left > 0; --left) {
        if (const std::function<void()> work = take()) {
            work();
        }
    }
}

std::function<void()> WorkQueue::take() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) {
        return {};
    }
    std::function<void()> work = std::move(items_.front());
    items_.pop_front();
    return work;
}

} // namespace vistrane
