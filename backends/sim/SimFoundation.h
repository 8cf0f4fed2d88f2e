#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimFiles.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimThreads.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSDateFormatter.h"
#include "platform/foundation/NSLocale.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

/// A date's text is the pattern, "-" and the seconds since 1970. Main thread only.
class SimDateFormatter final : public SimOf<NSDateFormatter> {
public:
    explicit SimDateFormatter(CallLog& log) : SimOf(log, "dateFormatter") {}

    void setDateFormat(const std::string& pattern) override {
        mainSet("setDateFormat:", pattern_, pattern);
    }
    std::string stringFromDate(NSDate date) const override {
        mainCall("stringFromDate: %", date.timeIntervalSince1970);
        return pattern_ + "-" + text(date.timeIntervalSince1970);
    }

private:
    std::string pattern_;
};

/// A comparison that is the same on every machine: digit runs by value, ASCII letters without case,
/// all else by byte, and ties by byte. It ignores the options and does not fold widths.
class SimLocale final : public NSLocale {
public:
    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override;
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override {
        std::stable_sort(
            texts.begin(), texts.end(), [&](const std::string& first, const std::string& second) {
                return compare(first, second, options, {0, first.size()}) == NSOrderedAscending;
            });
    }
};

/// The settings in memory. What a test reads and writes itself, in `values`, is not recorded.
class SimUserDefaults final : public SimOf<NSUserDefaults> {
public:
    using Bytes = std::vector<std::uint8_t>;
    using Value = std::variant<NSInteger, std::string, Bytes>;
    using Values = std::map<std::string, Value>;

    explicit SimUserDefaults(CallLog& log) : SimOf(log, "standardUserDefaults") {}

    NSInteger integerForKey(const std::string& key) const override {
        mainCall("integerForKey: %", key);
        return find<NSInteger>(key).value_or(integerValue(find<std::string>(key).value_or("")));
    }
    void setInteger(NSInteger value, const std::string& key) override {
        mainCall("setInteger: % forKey: %", value, key);
        values[key] = value;
    }
    std::optional<std::string> stringForKey(const std::string& key) const override {
        mainCall("stringForKey: %", key);
        return find<std::string>(key);
    }
    std::optional<Bytes> objectForKey(const std::string& key) const override {
        mainCall("objectForKey: %", key);
        return find<Bytes>(key);
    }
    void setObject(const Bytes& value, const std::string& key) override {
        mainCall("setObject: % forKey: %", std::string(value.begin(), value.end()), key);
        values[key] = value;
    }
    void synchronize() override {
        mainCall("synchronize");
        durableValues = values;
    }

    Values values;
    /// The values as they were synchronised last: what survives a crash.
    Values durableValues;

private:
    template <class Kind>
    std::optional<Kind> find(const std::string& key) const {
        const auto found = values.find(key);
        const auto* held = found == values.end() ? nullptr : std::get_if<Kind>(&found->second);
        return held ? std::optional(*held) : std::nullopt;
    }
};

/// Notices that the test posts.
class SimNotificationCenter final : public SimOf<NSDistributedNotificationCenter> {
public:
    explicit SimNotificationCenter(CallLog& log) : SimOf(log, "defaultCenter") {}

    void addObserver(std::function<void()> observer, const std::string& name) override {
        mainCall("addObserver: %", name);
        observers_.emplace(name, std::move(observer));
    }
    /// Calls the observers of that notice.
    void post(const std::string& name) const {
        const auto [first, last] = observers_.equal_range(name);
        for (auto observer = first; observer != last; ++observer) {
            observer->second();
        }
    }

private:
    std::multimap<std::string, std::function<void()>> observers_;
};

/// How bookmarks turn out. A bookmark is "bookmark of " and the path; other bytes are none.
struct SimBookmarks {
    static constexpr std::string_view start = "bookmark of ";
    static SimUserDefaults::Bytes of(const std::string& path) {
        const std::string bookmark = std::string(start) + path;
        return {bookmark.begin(), bookmark.end()};
    }

    std::optional<NSError> creationError;
    /// Given beside the address, so that a test shows whether the error is heeded.
    std::optional<NSError> resolutionError;
    bool grantsAccess = true;
};

struct SimBundle final : NSBundle {
    std::optional<std::string> objectForInfoDictionaryKey(const std::string& key) const override {
        const auto found = information.find(key);
        return found == information.end() ? std::nullopt : std::optional(found->second);
    }
    std::map<std::string, std::string> information{{"CFBundleShortVersionString", "2.1"},
                                                   {"CFBundleVersion", "5"}};
};

struct SimProcessInfo final : NSProcessInfo {
    std::string operatingSystemVersionString() const override { return version; }
    std::string version = "Version 13.1 (Build 22C65)";
};

class SimFoundation final : public Foundation {
public:
    SimFoundation(CallLog& log, SimLoop& loop, SimThreads& threads, SimFiles& files)
        : defaults(log), notifications(log), log_(log), loop_(loop), threads_(threads),
          files_(files) {}

    NSUserDefaults& standardUserDefaults() override { return defaults; }
    NSFileManager& defaultManager() override { return files_; }
    NSDistributedNotificationCenter& defaultCenter() override { return notifications; }
    NSRunLoop& currentRunLoop() override { return loop_; }
    const NSBundle& mainBundle() const override { return bundle; }
    const NSProcessInfo& processInfo() const override { return process; }
    std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                                            std::function<void(NSTimer&)> tick,
                                                            bool repeats) override {
        return loop_.schedule(interval, std::move(tick), repeats);
    }
    NSDate date() override {
        log_.record("date");
        return loop_.date();
    }
    NSDate dateWithTimeIntervalSinceNow(NSTimeInterval seconds) override {
        log_.record("dateWithTimeIntervalSinceNow: %", seconds);
        return {loop_.date().timeIntervalSince1970 + seconds};
    }
    std::unique_ptr<NSDateFormatter> dateFormatter() override {
        return std::make_unique<SimDateFormatter>(log_);
    }
    std::shared_ptr<const NSLocale> currentLocale() override { return locale_; }
    std::shared_ptr<NSThread> threadWithEntry(std::function<void()> entry) override {
        return threads_.make(std::move(entry));
    }
    std::shared_ptr<NSThread> currentThread() override { return threads_.current(); }
    BookmarkDataResult bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) override {
        log_.recordOnMain("bookmarkDataWithOptions: % of: %", options, url.absoluteString());
        if (bookmarks.creationError) {
            return {{}, bookmarks.creationError};
        }
        return {SimBookmarks::of(url.path()), std::nullopt};
    }
    BookmarkURLResult URLByResolvingBookmarkData(const SimUserDefaults::Bytes& data,
                                                 std::uint64_t options) override {
        const std::string bookmark(data.begin(), data.end());
        log_.recordOnMain("URLByResolvingBookmarkData: % options: %", bookmark, options);
        if (!bookmark.starts_with(SimBookmarks::start)) {
            return {std::nullopt, NSError{"SimBookmarks", 1, "The bytes are no bookmark."}};
        }
        return {NSURL::fileURLWithPath(bookmark.substr(SimBookmarks::start.size())),
                bookmarks.resolutionError};
    }
    bool startAccessingSecurityScopedResource(const NSURL& url) override {
        log_.recordOnMain("startAccessingSecurityScopedResource: %", url.absoluteString());
        return bookmarks.grantsAccess;
    }
    void NSLog(const std::string& message) override { log_.record("NSLog: %", message); }

    SimUserDefaults defaults;
    SimNotificationCenter notifications;
    SimBookmarks bookmarks;
    SimBundle bundle;
    SimProcessInfo process;

private:
    CallLog& log_;
    SimLoop& loop_;
    SimThreads& threads_;
    SimFiles& files_;
    std::shared_ptr<SimLocale> locale_ = std::make_shared<SimLocale>();
};

} // namespace vistrane
