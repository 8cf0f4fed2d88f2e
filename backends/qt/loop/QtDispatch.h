#pragma once

#include "backends/posix/GlobalQueue.h"
#include "backends/qt/loop/QtRunLoop.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// The run loop's main queue, and a global queue with one thread. Destroy it by the rules of
/// `GlobalQueue`.
class QtDispatch final : public Dispatch {
public:
    explicit QtDispatch(QtRunLoop& loop) : loop_(loop) {}

    /// The same queue for every priority.
    DispatchQueue& dispatch_get_global_queue(std::intptr_t, std::uintptr_t) override {
        return globalQueue_;
    }
    DispatchQueue& dispatch_get_main_queue() override { return loop_.mainQueue(); }

private:
    QtRunLoop& loop_;
    GlobalQueue globalQueue_;
};

} // namespace vistrane
