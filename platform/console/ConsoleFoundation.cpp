#include "platform/console/ConsoleFoundation.h"

#include <chrono>
#include <utility>

#include "platform/console/ConsoleThread.h"
#include "platform/media/text/IcuDateFormatter.h"
#include "platform/media/text/bookmark.h"

namespace vistrane {

ConsoleFoundation::ConsoleFoundation(ConsoleRunLoop& loop, NSUserDefaults& defaults,
                                     ConsoleOutput& output, const std::string& version)
    : loop_(loop), defaults_(defaults), output_(output), bundle_(version) {}

std::shared_ptr<NSTimer> ConsoleFoundation::scheduledTimerWithTimeInterval(
    NSTimeInterval interval, std::function<void(NSTimer&)> tick, bool repeats) {
    return loop_.scheduleTimer(interval, std::move(tick), repeats);
}

NSDate ConsoleFoundation::date() {
    using namespace std::chrono;
    return {duration<double>(system_clock::now().time_since_epoch()).count()};
}

NSDate ConsoleFoundation::dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
    return {date().timeIntervalSince1970 + seconds};
}

std::unique_ptr<NSDateFormatter> ConsoleFoundation::dateFormatter() {
    return std::make_unique<IcuDateFormatter>();
}

std::shared_ptr<NSThread> ConsoleFoundation::threadWithEntry(std::function<void()> entry) {
    return ConsoleThread::withEntry(std::move(entry), [this](const NSError& error) {
        NSLog(error.localizedDescription);
        if (threadFailed_) {
            threadFailed_();
        }
    });
}

std::shared_ptr<NSThread> ConsoleFoundation::currentThread() {
    return ConsoleThread::current();
}

BookmarkDataResult ConsoleFoundation::bookmarkDataWithOptions(const NSURL& url, std::uint64_t) {
    return makeBookmark(url);
}

BookmarkURLResult
ConsoleFoundation::URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                              std::uint64_t) {
    return resolveBookmark(data);
}

} // namespace vistrane
