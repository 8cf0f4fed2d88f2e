#include "backends/posix/GlobalQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "backends/posix/threads.h"

namespace vistrane {

/// Shared by the queue and its thread.
struct GlobalQueue::Shared {
    void runItems() {
        while (const std::optional<std::function<void()>> work = take()) {
            (*work)();
        }
    }

    /// The oldest item; nothing once the queue is destroyed.
    std::optional<std::function<void()>> take() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return closed || !items.empty(); });
        if (closed) {
            return std::nullopt;
        }
        std::optional<std::function<void()>> work = std::move(items.front());
        items.pop_front();
        return work;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> items;
    bool started = false;
    bool closed = false;
};

GlobalQueue::GlobalQueue() : shared_(std::make_shared<Shared>()) {
    startThread();
}

GlobalQueue::~GlobalQueue() {
    std::deque<std::function<void()>> dropped;
    const std::lock_guard lock(shared_->mutex);
    shared_->closed = true;
    dropped.swap(shared_->items);
    shared_->changed.notify_one();
}

void GlobalQueue::async(std::function<void()> work) {
    const std::lock_guard lock(shared_->mutex);
    shared_->items.push_back(std::move(work));
    shared_->changed.notify_one();
    startThread();
}

/// If the system refuses a thread, the next item tries again.
void GlobalQueue::startThread() {
    if (!shared_->started) {
        shared_->started = startDetachedThread([shared = shared_] { shared->runItems(); });
    }
}

} // namespace vistrane
