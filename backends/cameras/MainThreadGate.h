#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// Posts work to the main thread until it is closed, because a thread that returns late from a
/// camera driver must not use a destroyed queue. Any thread.
class MainThreadGate {
public:
    explicit MainThreadGate(Dispatch& dispatch) : dispatch_(&dispatch) {}

    /// Discards the work after `close`.
    void post(std::function<void()> work) {
        std::lock_guard lock(mutex_);
        if (dispatch_ != nullptr) {
            dispatch_async(dispatch_->dispatch_get_main_queue(), std::move(work));
        }
    }

    void close() {
        std::lock_guard lock(mutex_);
        dispatch_ = nullptr;
    }

private:
    std::mutex mutex_;
    Dispatch* dispatch_;
};

} // namespace vistrane
