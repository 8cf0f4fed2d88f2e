#pragma once

#include <string>
#include <utility>

#include "backends/console/ConsoleOutput.h"
#include "backends/console/ConsoleRunLoop.h"
#include "backends/console/SilentNotificationCenter.h"
#include "backends/posix/PosixFoundation.h"

namespace vistrane {

/// The Foundation kit of the command line. The run loop, the settings and the output outlive it;
/// the system log is the output.
class ConsoleFoundation final : public PosixFoundation {
public:
    ConsoleFoundation(ConsoleRunLoop& loop, NSUserDefaults& defaults, ConsoleOutput& output,
                      const std::string& version)
        : PosixFoundation(version), loop_(loop), defaults_(defaults), output_(output) {}

    NSUserDefaults& standardUserDefaults() override { return defaults_; }
    NSDistributedNotificationCenter& defaultCenter() override { return notificationCenter_; }
    NSRunLoop& currentRunLoop() override { return loop_; }

    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override {
        return loop_.scheduleTimer(interval, std::move(tick), repeats);
    }

    void NSLog(const std::string& message) override { output_.writeLine(message); }

private:
    ConsoleRunLoop& loop_;
    NSUserDefaults& defaults_;
    ConsoleOutput& output_;
    SilentNotificationCenter notificationCenter_;
};

} // namespace vistrane
