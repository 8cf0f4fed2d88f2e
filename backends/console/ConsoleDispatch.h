#pragma once

#include "backends/console/ConsoleRunLoop.h"
#include "backends/posix/GlobalQueue.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// The run loop's main queue, and one thread for the global queue. What `GlobalQueue` says of its
/// end holds for this object as well.
class ConsoleDispatch final : public Dispatch {
public:
    explicit ConsoleDispatch(ConsoleRunLoop& loop) : loop_(loop) {}

    /// One queue, whatever the priority.
    DispatchQueue& dispatch_get_global_queue(std::intptr_t, std::uintptr_t) override {
        return globalQueue_;
    }
    DispatchQueue& dispatch_get_main_queue() override { return loop_.mainQueue(); }

private:
    ConsoleRunLoop& loop_;
    GlobalQueue globalQueue_;
};

} // namespace vistrane
