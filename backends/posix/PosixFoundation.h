#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "backends/icu/IcuLocale.h"
#include "backends/posix/PosixFileManager.h"
#include "backends/posix/ProgramBundle.h"
#include "backends/posix/SystemProcessInfo.h"
#include "platform/foundation/Foundation.h"

namespace vistrane {

/// The part of the Foundation kit that does not depend on the run loop. A derived class adds run
/// loop, settings, notifications and log.
class PosixFoundation : public Foundation {
public:
    explicit PosixFoundation(const std::string& version) : bundle_(version) {}

    NSFileManager& defaultManager() override { return fileManager_; }
    const NSBundle& mainBundle() const override { return bundle_; }
    const NSProcessInfo& processInfo() const override { return processInfo_; }

    NSDate date() override;
    NSDate dateWithTimeIntervalSinceNow(NSTimeInterval seconds) override;

    std::unique_ptr<NSDateFormatter> dateFormatter() override;
    /// Always the same object.
    std::shared_ptr<const NSLocale> currentLocale() override { return locale_; }

    /// `handler` is called within `start` if a thread cannot be started.
    void setThreadFailureHandler(std::function<void()> handler) {
        threadFailed_ = std::move(handler);
    }

    /// A thread that cannot be started is logged.
    std::shared_ptr<NSThread> threadWithEntry(std::function<void()> entry) override;
    std::shared_ptr<NSThread> currentThread() override;

    BookmarkDataResult bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) override;
    BookmarkURLResult URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                 std::uint64_t options) override;
    /// Does nothing: there is no sandbox, so every address is accessible.
    bool startAccessingSecurityScopedResource(const NSURL&) override { return true; }

private:
    std::function<void()> threadFailed_;
    const ProgramBundle bundle_;
    const SystemProcessInfo processInfo_;
    PosixFileManager fileManager_;
    const std::shared_ptr<const NSLocale> locale_ = std::make_shared<const IcuLocale>();
};

} // namespace vistrane
