#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/foundation/NSError.h"
#include "platform/foundation/NSThread.h"

namespace vistrane {

/// A thread of its own that nobody joins. The entry and its captures are let go of on that thread,
/// right after the entry has returned.
class PosixThread final : public NSThread, public std::enable_shared_from_this<PosixThread> {
public:
    /// `failed` is told, within `start`, that the system grants no thread; the entry never runs
    /// then. A second `start` does nothing.
    static std::shared_ptr<PosixThread> withEntry(std::function<void()> entry,
                                                  std::function<void(const NSError&)> failed = {});

    /// The running thread's own object; one made for the purpose on a thread of other origin.
    static std::shared_ptr<NSThread> current();

    void start() override;
    void cancel() override { cancelled_ = true; }
    bool isCancelled() const override { return cancelled_; }

private:
    PosixThread(std::function<void()> entry, std::function<void(const NSError&)> failed);
    void run();

    std::function<void()> entry_;
    std::function<void(const NSError&)> failed_;
    std::atomic<bool> started_{false};
    std::atomic<bool> cancelled_{false};
};

} // namespace vistrane
