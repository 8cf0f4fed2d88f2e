#include "platform/console/MainQueue.h"

#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace vistrane {

MainQueue::MainQueue() {
    if (pipe(ends_) != 0) {
        ends_[0] = ends_[1] = -1;
        return;
    }
    for (const int end : ends_) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

MainQueue::~MainQueue() {
    for (const int end : ends_) {
        if (end >= 0) {
            close(end);
        }
    }
}

void MainQueue::async(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        items_.push_back(std::move(work));
    }
    wake();
}

void MainQueue::wake() {
    if (ends_[1] >= 0 && !woken_.exchange(true)) {
        const char byte = 0;
        // The pipe cannot be full: at most one byte lies in it.
        [[maybe_unused]] const ssize_t written = write(ends_[1], &byte, 1);
    }
}

void MainQueue::clearWake() {
    char bytes[16];
    while (read(ends_[0], bytes, sizeof bytes) > 0) {
    }
    // After the reading: a wake in between leaves no byte, but the loop looks at everything again
    // before it next sleeps.
    woken_ = false;
}

std::size_t MainQueue::size() const {
    const std::lock_guard lock(mutex_);
    return items_.size();
}

std::function<void()> MainQueue::take() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) {
        return {};
    }
    std::function<void()> work = std::move(items_.front());
    items_.pop_front();
    return work;
}

} // namespace vistrane
