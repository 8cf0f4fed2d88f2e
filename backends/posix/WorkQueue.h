#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// Work items for the thread of a run loop, run in the order in which they were added.
class WorkQueue final : public DispatchQueue {
public:
    /// `wake` ends the loop's sleep. It is called on any thread, at most once between two calls of
    /// `awake`.
    explicit WorkQueue(std::function<void()> wake);

    /// Any thread.
    void async(std::function<void()> work) override;

    /// Any thread. Store everything that the loop must see before this call.
    void wake();

    // ---- The loop's thread ---------------------------------------------------------------------
    /// The loop is awake and will check everything before it sleeps again.
    void awake() { woken_ = false; }

    std::size_t size() const;

    /// Runs the items that are queued at the time of the call, but not those that they add, so that
    /// timers are not starved. Destroys each item after it has run.
    void runWaiting();

private:
    /// The oldest item, or an empty function.
    std::function<void()> take();

    const std::function<void()> wake_;
    std::atomic<bool> woken_{false};
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> items_;
};

} // namespace vistrane
