#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// Work for the run loop's thread, in its order.
class WorkQueue final : public DispatchQueue {
public:
    /// `wake` ends the loop's sleep. It is called on any thread, and not again before `awake`.
    explicit WorkQueue(std::function<void()> wake);

    /// Any thread.
    void async(std::function<void()> work) override;

    /// Any thread. What the loop is to notice was stored before this call.
    void wake();

    // ---- The loop's thread ---------------------------------------------------------------------
    /// The loop is awake and will look at everything before it sleeps again.
    void awake() { woken_ = false; }

    std::size_t size() const;

    /// Runs the items that wait at the moment of the call, and not what they add: others get their
    /// turn. Each item is let go of when it has run.
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
