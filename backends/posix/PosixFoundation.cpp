#include "backends/posix/PosixFoundation.h"

#include "backends/icu/IcuDateFormatter.h"
#include "backends/posix/PosixThread.h"
#include "backends/posix/bookmark.h"
#include "backends/posix/clock.h"

namespace vistrane {

NSDate PosixFoundation::date() {
    return wallClockNow();
}

NSDate PosixFoundation::dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
    return {date().timeIntervalSince1970 + seconds};
}

std::unique_ptr<NSDateFormatter> PosixFoundation::dateFormatter() {
    return std::make_unique<IcuDateFormatter>();
}

std::shared_ptr<NSThread> PosixFoundation::threadWithEntry(std::function<void()> entry) {
    return std::make_shared<PosixThread>(std::move(entry), [this] {
        NSLog("A thread could not be started because the system refuses more of them; end other "
              "programs and try again");
        if (threadFailed_) {
            threadFailed_();
        }
    });
}

std::shared_ptr<NSThread> PosixFoundation::currentThread() {
    return PosixThread::current();
}

BookmarkDataResult PosixFoundation::bookmarkDataWithOptions(const NSURL& url, std::uint64_t) {
    return makeBookmark(url);
}

BookmarkURLResult PosixFoundation::URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                              std::uint64_t) {
    return resolveBookmark(data);
}

} // namespace vistrane
