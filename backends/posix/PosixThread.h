#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/foundation/NSThread.h"

namespace vistrane {

/// A detached thread. It destroys the entry and its captures as soon as the entry has returned.
class PosixThread final : public NSThread, public std::enable_shared_from_this<PosixThread> {
public:
    /// `failed` is called within `start` if the system refuses a thread; the entry then never runs.
    /// A second `start` does nothing. A `std::shared_ptr` must own the object.
    explicit PosixThread(std::function<void()> entry, std::function<void()> failed = {});

    /// The object of the calling thread. A thread that was started in another way gets an object
    /// with the first call.
    static std::shared_ptr<NSThread> current();

    void start() override;
    void cancel() override { cancelled_ = true; }
    bool isCancelled() const override { return cancelled_; }

private:
    void run();

    std::function<void()> entry_;
    std::function<void()> failed_;
    std::atomic<bool> started_{false};
    std::atomic<bool> cancelled_{false};
};

} // namespace vistrane
