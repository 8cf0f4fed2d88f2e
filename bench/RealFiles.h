#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "backends/posix/PosixFoundation.h"

namespace vistrane::bench {

/// The real file system and collation. Everything else is simulated.
class RealFiles final : public PosixFoundation {
public:
    explicit RealFiles(Foundation& sim) : PosixFoundation("0.0.0"), sim_(sim) {}

    NSUserDefaults& standardUserDefaults() override { return sim_.standardUserDefaults(); }
    NSDistributedNotificationCenter& defaultCenter() override { return sim_.defaultCenter(); }
    NSRunLoop& currentRunLoop() override { return sim_.currentRunLoop(); }
    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override {
        return sim_.scheduledTimerWithTimeInterval(interval, std::move(tick), repeats);
    }
    void NSLog(const std::string& message) override { sim_.NSLog(message); }

private:
    Foundation& sim_;
};

} // namespace vistrane::bench
