#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSDateFormatter.h"
#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLocale.h"
#include "platform/foundation/NSProcessInfo.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/NSTimer.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

enum NSURLBookmarkResolutionOptions : std::uint64_t {
    NSURLBookmarkResolutionWithSecurityScope = 1024
};
enum NSURLBookmarkCreationOptions : std::uint64_t { NSURLBookmarkCreationWithSecurityScope = 2048 };

/// The bytes of a bookmark, or the reason why there are none.
struct BookmarkDataResult {
    std::vector<std::uint8_t> data;
    std::optional<NSError> error;
};

/// A resolved bookmark, or the reason why there is none.
struct BookmarkURLResult {
    std::optional<NSURL> url;
    std::optional<NSError> error;
};

/// Class messages of Foundation. Main thread only, unless a comment says otherwise. Returned
/// objects are owned by the caller; references are valid as long as the kit.
class Foundation {
public:
    virtual ~Foundation() = default;
    Foundation(const Foundation&) = delete;
    Foundation& operator=(const Foundation&) = delete;

    virtual NSUserDefaults& standardUserDefaults() = 0;
    /// Any thread.
    virtual NSFileManager& defaultManager() = 0;
    virtual NSDistributedNotificationCenter& defaultCenter() = 0;
    virtual NSRunLoop& currentRunLoop() = 0;
    /// Any thread.
    virtual const NSBundle& mainBundle() const = 0;
    /// Any thread.
    virtual const NSProcessInfo& processInfo() const = 0;

    /// Calls `tick` every `interval` seconds, first one interval after this call. An interval of 0
    /// or less counts as 0.0001 s. `tick` gets the timer.
    virtual std::shared_ptr<NSTimer>
    scheduledTimerWithTimeInterval(NSTimeInterval interval, std::function<void(NSTimer&)> tick,
                                   bool repeats) = 0;

    /// Now. Any thread.
    virtual NSDate date() = 0;
    virtual NSDate dateWithTimeIntervalSinceNow(NSTimeInterval seconds) = 0;

    /// A new formatter with the user's current locale, calendar and time zone.
    virtual std::unique_ptr<NSDateFormatter> dateFormatter() = 0;
    virtual std::shared_ptr<const NSLocale> currentLocale() = 0;

    /// A thread for `entry` that has not been started.
    virtual std::shared_ptr<NSThread> threadWithEntry(std::function<void()> entry) = 0;
    /// The calling thread's object. Call it only on a thread from `threadWithEntry`.
    virtual std::shared_ptr<NSThread> currentThread() = 0;

    /// Opaque bytes that identify `url` across restarts.
    virtual BookmarkDataResult bookmarkDataWithOptions(const NSURL& url, std::uint64_t options) = 0;
    /// The address of a bookmark. Does not check whether it exists.
    virtual BookmarkURLResult URLByResolvingBookmarkData(const std::vector<std::uint8_t>& data,
                                                         std::uint64_t options) = 0;
    /// Grants the process access to the address until it ends.
    virtual bool startAccessingSecurityScopedResource(const NSURL& url) = 0;

    /// Writes one message to the system log. Any thread.
    virtual void NSLog(const std::string& message) = 0;

protected:
    Foundation() = default;
};

} // namespace vistrane
