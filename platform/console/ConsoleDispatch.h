#pragma once

#include <memory>

#include "platform/console/ConsoleRunLoop.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// The run loop's main queue, and one thread for the global queue.
///
/// Nobody waits for that thread. An object that other threads may still use when the program ends
/// is made with `new` and never deleted; one that is deleted drops the items that wait and lets the
/// running one end by itself.
class ConsoleDispatch final : public Dispatch {
public:
    explicit ConsoleDispatch(ConsoleRunLoop& loop);
    ~ConsoleDispatch() override;

    /// One queue, whatever the priority.
    DispatchQueue& dispatch_get_global_queue(std::intptr_t priority, std::uintptr_t flags) override;
    DispatchQueue& dispatch_get_main_queue() override { return loop_.mainQueue(); }

private:
    class GlobalQueue;

    ConsoleRunLoop& loop_;
    std::unique_ptr<GlobalQueue> globalQueue_;
};

} // namespace vistrane
