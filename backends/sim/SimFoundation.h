#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimDateFormatter.h"
#include "backends/sim/SimFiles.h"
#include "backends/sim/SimLocale.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimThreads.h"
#include "backends/sim/SimUserDefaults.h"
#include "platform/foundation/Foundation.h"

namespace vistrane {

/// Notices that the test posts.
class SimNotificationCenter final : public NSDistributedNotificationCenter, public SimObject {
public:
    SimNotificationCenter(CallLog& log, SimLoop& loop)
        : SimObject(log, "defaultCenter"), loop_(loop) {}

    void addObserver(std::function<void()> observer, const std::string& name) override;
    /// Calls the observers from the run loop, before this returns.
    void post(const std::string& name);

private:
    SimLoop& loop_;
    std::multimap<std::string, std::function<void()>> observers_;
};

/// How bookmarks turn out. A bookmark spells "bookmark of " and the path; other bytes are none.
struct SimBookmarks {
    static std::vector<std::uint8_t> of(const std::string& path);

    std::optional<NSError> creationError;
    /// Given beside the address, so that it shows whether the error is heeded.
    std::optional<NSError> resolutionError;
    bool grantsAccess = true;
};

class SimBundle final : public NSBundle {
public:
    std::optional<std::string> objectForInfoDictionaryKey(const std::string& key) const override {
        const auto found = information.find(key);
        return found == information.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<std::string, std::string> information{{"CFBundleShortVersionString", "2.1"},
                                                   {"CFBundleVersion", "5"}};
};

class SimProcessInfo final : public NSProcessInfo {
public:
    std::string operatingSystemVersionString() const override { return version; }

    std::string version = "Version 13.1 (Build 22C65)";
};

class SimFoundation final : public Foundation {
public:
    SimFoundation(CallLog& log, SimLoop& loop, SimThreads& threads, SimFiles& files);

    NSUserDefaults& standardUserDefaults() override { return defaults; }
    NSFileManager& defaultManager() override { return files_; }
    NSDistributedNotificationCenter& defaultCenter() override { return notifications; }
    NSRunLoop& currentRunLoop() override { return loop_; }
    const NSBundle& mainBundle() const override { return bundle; }
    const NSProcessInfo& processInfo() const override { return process; }
    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override;
    NSDate date() override;
    NSDate dateWithTimeIntervalSinceNow(NSTimeInterval seconds) override;
    std::unique_ptr<NSDateFormatter> dateFormatter() override;
    std::shared_ptr<const NSLocale> currentLocale() override;
    std::shared_ptr<NSThread> threadWithEntry(std::function<void()> entry) override;
    std::shared_ptr<NSThread> currentThread() override { return threads_.current(); }
    BookmarkDataResult bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) override;
    BookmarkURLResult URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                 std::uint64_t options) override;
    bool startAccessingSecurityScopedResource(const NSURL& url) override;
    void NSLog(const std::string& message) override;

    SimUserDefaults defaults;
    SimNotificationCenter notifications;
    SimBookmarks bookmarks;
    SimDateRules dateRules;
    SimBundle bundle;
    SimProcessInfo process;

private:
    CallLog& log_;
    SimLoop& loop_;
    SimThreads& threads_;
    SimFiles& files_;
    std::shared_ptr<SimLocale> locale_;
};

} // namespace vistrane
