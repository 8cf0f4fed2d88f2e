#pragma once

#include <functional>
#include <string>
#include <utility>

#include "backends/posix/PosixFoundation.h"
#include "backends/qt/loop/NotificationCenter.h"
#include "backends/qt/loop/QtRunLoop.h"

namespace vistrane {

/// The Foundation kit of both front ends. The arguments of its constructor outlive it.
class QtFoundation final : public PosixFoundation {
public:
    /// `log` gets one message without a newline, on any thread, and must return immediately.
    QtFoundation(QtRunLoop& loop, NSUserDefaults& defaults, NotificationCenter& notificationCenter,
                 std::function<void(const std::string&)> log, const std::string& version)
        : PosixFoundation(version), loop_(loop), defaults_(defaults),
          notificationCenter_(notificationCenter), log_(std::move(log)) {}

    NSUserDefaults& standardUserDefaults() override { return defaults_; }
    NSDistributedNotificationCenter& defaultCenter() override { return notificationCenter_; }
    NSRunLoop& currentRunLoop() override { return loop_; }

    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override {
        return loop_.scheduleTimer(interval, std::move(tick), repeats);
    }

    void NSLog(const std::string& message) override { log_(message); }

private:
    QtRunLoop& loop_;
    NSUserDefaults& defaults_;
    NotificationCenter& notificationCenter_;
    const std::function<void(const std::string&)> log_;
};

} // namespace vistrane
