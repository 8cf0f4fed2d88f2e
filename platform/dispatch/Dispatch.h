#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace vistrane {

/// A queue of work items. Any thread may add to it.
class DispatchQueue {
public:
    virtual ~DispatchQueue() = default;
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    /// Appends `work` and returns. Items that are still queued when the process ends are discarded.
    virtual void async(std::function<void()> work) = 0;

protected:
    DispatchQueue() = default;
};

inline constexpr std::intptr_t DISPATCH_QUEUE_PRIORITY_DEFAULT = 0;

/// The process's queues.
class Dispatch {
public:
    virtual ~Dispatch() = default;
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    /// Runs items one at a time, in the order in which they were added, on a thread other than the
    /// main thread. So the work that they post keeps that order.
    virtual DispatchQueue& dispatch_get_global_queue(std::intptr_t priority,
                                                     std::uintptr_t flags) = 0;

    /// Runs items on the main thread, from its run loop, in the order in which they were added.
    virtual DispatchQueue& dispatch_get_main_queue() = 0;

protected:
    Dispatch() = default;
};

inline void dispatch_async(DispatchQueue& queue, std::function<void()> work) {
    queue.async(std::move(work));
}

} // namespace vistrane
