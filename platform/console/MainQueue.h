#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// Work for the run loop's thread, with a pipe that ends the loop's sleep.
class MainQueue final : public DispatchQueue {
public:
    MainQueue();
    ~MainQueue() override;

    /// Any thread.
    void async(std::function<void()> work) override;

    /// Any thread. What the loop is to notice was stored before this call.
    void wake();

    /// Readable after `wake`. -1 when the system gave no pipe: the loop must look by itself.
    int wakeDescriptor() const { return ends_[0]; }
    void clearWake();

    std::size_t size() const;
    /// The oldest item, or an empty function.
    std::function<void()> take();

private:
    int ends_[2] = {-1, -1};
    std::atomic<bool> woken_{false};
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> items_;
};

} // namespace vistrane
