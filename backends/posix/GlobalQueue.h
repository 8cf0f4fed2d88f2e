#pragma once

#include <functional>
#include <memory>

#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// One thread that runs one item at a time, in the order in which they were added.
///
/// Nobody waits for that thread. A queue that other threads may still use when the program ends is
/// made with `new` and never deleted; one that is deleted drops the items that wait and lets the
/// running one end by itself.
class GlobalQueue final : public DispatchQueue {
public:
    /// The thread is there from the beginning: a shortage of threads later on stops nothing.
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
