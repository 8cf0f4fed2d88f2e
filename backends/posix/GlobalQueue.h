#pragma once

#include <functional>
#include <memory>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// Runs items one at a time, in the order in which they were added, on one thread.
///
/// The thread is never joined. Create a queue that other threads may still use when the program
/// ends with `new`, and never delete it. The destructor discards the waiting items and does not
/// wait for the running one.
class GlobalQueue final : public DispatchQueue {
public:
    /// Starts the thread, so that a later shortage of threads does not matter.
    GlobalQueue();
    ~GlobalQueue() override;

    /// Any thread.
    void async(std::function<void()> work) override;

private:
    struct Shared;

    void startThread();

    const std::shared_ptr<Shared> shared_;
};

} // namespace vistrane
