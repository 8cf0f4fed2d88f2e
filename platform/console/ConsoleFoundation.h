#pragma once

#include <utility>

#include "platform/console/ConsoleOutput.h"
#include "platform/console/ConsoleRunLoop.h"
#include "platform/console/SilentNotificationCenter.h"
#include "platform/foundation/Foundation.h"
#include "platform/media/text/IcuLocale.h"
#include "platform/media/text/PosixFileManager.h"
#include "platform/media/text/ProgramBundle.h"
#include "platform/media/text/SystemProcessInfo.h"

namespace vistrane {

/// The Foundation kit of the command line. The run loop, the settings and the output outlive it;
/// the system log is the output.
class ConsoleFoundation final : public Foundation {
public:
    ConsoleFoundation(ConsoleRunLoop& loop, NSUserDefaults& defaults, ConsoleOutput& output,
                      const std::string& version);

    NSUserDefaults& standardUserDefaults() override { return defaults_; }
    NSFileManager& defaultManager() override { return fileManager_; }
    NSDistributedNotificationCenter& defaultCenter() override { return notificationCenter_; }
    NSRunLoop& currentRunLoop() override { return loop_; }
    const NSBundle& mainBundle() const override { return bundle_; }
    const NSProcessInfo& processInfo() const override { return processInfo_; }

    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override;

    NSDate date() override;
    NSDate dateWithTimeIntervalSinceNow(NSTimeInterval seconds) override;

    std::unique_ptr<NSDateFormatter> dateFormatter() override;
    /// One and the same for the whole run.
    std::shared_ptr<const NSLocale> currentLocale() override { return locale_; }

    /// Called, within `start`, when a thread cannot be started.
    void setThreadFailureHandler(std::function<void()> handler) {
        threadFailed_ = std::move(handler);
    }

    /// A thread that cannot be started says so in the log.
    std::shared_ptr<NSThread> threadWithEntry(std::function<void()> entry) override;
    std::shared_ptr<NSThread> currentThread() override;

    BookmarkDataResult bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) override;
    BookmarkURLResult URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                 std::uint64_t options) override;
    /// Every address is open to the program already.
    bool startAccessingSecurityScopedResource(const NSURL&) override { return true; }

    void NSLog(const std::string& message) override { output_.writeLine(message); }

private:
    ConsoleRunLoop& loop_;
    NSUserDefaults& defaults_;
    ConsoleOutput& output_;
    std::function<void()> threadFailed_;
    const ProgramBundle bundle_;
    const SystemProcessInfo processInfo_;
    PosixFileManager fileManager_;
    SilentNotificationCenter notificationCenter_;
    const std::shared_ptr<const NSLocale> locale_ = std::make_shared<const IcuLocale>();
};

} // namespace vistrane
