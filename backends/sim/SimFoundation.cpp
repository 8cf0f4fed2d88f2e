#include "backends/sim/SimFoundation.h"

#include <utility>

namespace vistrane {

namespace {

const std::string bookmarkStart = "bookmark of ";

} // namespace

std::vector<std::uint8_t> SimBookmarks::of(const std::string& path) {
    const std::string text = bookmarkStart + path;
    return {text.begin(), text.end()};
}

void SimNotificationCenter::addObserver(std::function<void()> observer, const std::string& name) {
    mainCall("addObserver: " + name);
    observers_.emplace(name, std::move(observer));
}

void SimNotificationCenter::post(const std::string& name) {
    loop_.at(0.0, [this, name] {
        const auto [first, last] = observers_.equal_range(name);
        for (auto observer = first; observer != last; ++observer) {
            observer->second();
        }
    });
    loop_.advance(0.0);
}

SimFoundation::SimFoundation(CallLog& log, SimLoop& loop, SimThreads& threads, SimFiles& files)
    : defaults(log), notifications(log, loop), log_(log), loop_(loop), threads_(threads),
      files_(files), locale_(std::make_shared<SimLocale>(log)) {}

std::shared_ptr<NSTimer>
SimFoundation::scheduledTimerWithTimeInterval(NSTimeInterval interval,
                                              std::function<void(NSTimer&)> tick, bool repeats) {
    return loop_.schedule(interval, std::move(tick), repeats);
}

NSDate SimFoundation::date() {
    log_.record("date");
    return loop_.date();
}

NSDate SimFoundation::dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
    log_.record("dateWithTimeIntervalSinceNow: " + decimal(seconds));
    return {loop_.date().timeIntervalSince1970 + seconds};
}

std::unique_ptr<NSDateFormatter> SimFoundation::dateFormatter() {
    return std::make_unique<SimDateFormatter>(log_, dateRules);
}

std::shared_ptr<const NSLocale> SimFoundation::currentLocale() {
    log_.recordGetter("currentLocale");
    return locale_;
}

std::shared_ptr<NSThread> SimFoundation::threadWithEntry(std::function<void()> entry) {
    return threads_.make(std::move(entry));
}

BookmarkDataResult SimFoundation::bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) {
    const std::string call =
        "bookmarkDataWithOptions: " + std::to_string(options) + " of: " + url.absoluteString();
    log_.requireMain(call);
    log_.record(call);
    if (bookmarks.creationError) {
        return {{}, bookmarks.creationError};
    }
    return {SimBookmarks::of(url.path()), std::nullopt};
}

BookmarkURLResult SimFoundation::URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                            std::uint64_t options) {
    const std::string text(data.begin(), data.end());
    const std::string call =
        "URLByResolvingBookmarkData: " + text + " options: " + std::to_string(options);
    log_.requireMain(call);
    log_.record(call);
    if (text.compare(0, bookmarkStart.size(), bookmarkStart) != 0) {
        return {std::nullopt, NSError{"SimBookmarks", 1, "The bytes are no bookmark."}};
    }
    return {NSURL::fileURLWithPath(text.substr(bookmarkStart.size())), bookmarks.resolutionError};
}

bool SimFoundation::startAccessingSecurityScopedResource(const NSURL& url) {
    const std::string call = "startAccessingSecurityScopedResource: " + url.absoluteString();
    log_.requireMain(call);
    log_.record(call);
    return bookmarks.grantsAccess;
}

void SimFoundation::NSLog(const std::string& message) {
    log_.record("NSLog: " + message);
}

} // namespace vistrane
