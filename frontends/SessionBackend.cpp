#include "frontends/SessionBackend.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

#include "backends/posix/EndingSignals.h"
#include "backends/posix/threads.h"

namespace vistrane {

namespace {

/// The timeout for ending the process. The main thread or the folder's disk may not respond.
constexpr std::chrono::milliseconds endTimeout{5000};
/// The last part of it, to remove unfinished movies in.
constexpr std::chrono::milliseconds removalTime{500};

using Clock = std::chrono::steady_clock;

void waitWhile(const std::function<bool()>& condition, Clock::time_point end) {
    while (condition() && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace

SessionBackend::SessionBackend(QtRunLoop& loop, NSUserDefaults& defaults,
                               std::function<void(const std::string&)> log,
                               SessionObserver& observer, const Options& options)
    : dispatch(loop),
      foundation(loop, defaults, notificationCenter, std::move(log), options.version),
      pictures(observer), cameras(dispatch, observer, options.cameras),
      movies(observer, options.movies), loop_(loop), defaults_(defaults), observer_(observer) {}

Platform SessionBackend::platform(AppKit& appKit) {
    return {foundation, appKit, avFoundation, coreVideo, coreGraphics, dispatch};
}

std::optional<NSError> SessionBackend::rememberFolder(const std::string& path) {
    const BookmarkDataResult bookmark = foundation.bookmarkDataWithOptions(
        NSURL::fileURLWithPath(path), NSURLBookmarkCreationWithSecurityScope);
    if (bookmark.error) {
        return bookmark.error;
    }
    defaults_.setObject(bookmark.data, "iData");
    defaults_.synchronize();
    return std::nullopt;
}

void SessionBackend::handleSignals(const Endings& endings) {
    EndingSignals::handle({endings.finish,
                           [this, endings](int status) {
                               loop_.mainQueue().async([endings, status] { endings.end(status); });
                           },
                           [this, endings](int status) { endWithoutMainThread(status, endings); }});
}

void SessionBackend::endMovies(int status) {
    constexpr int firstSignalStatus = 129;
    movies.end(status < firstSignalStatus ? std::nullopt : std::optional(endTimeout));
}

/// Waits for a frame that is being saved and for movies that are being finished.
void SessionBackend::endWithoutMainThread(int status, const Endings& endings) {
    startDetachedThread([status] {
        std::this_thread::sleep_for(endTimeout);
        std::_Exit(status);
    });
    const auto end = Clock::now() + endTimeout - removalTime;
    const auto isSavingFrame = [this] { return observer_.isSavingFrame(); };
    waitWhile(endings.isEnding, end);
    endings.saveSettings();
    waitWhile(isSavingFrame, end);
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    movies.end(std::max(left, std::chrono::milliseconds(0)));
    waitWhile(isSavingFrame, end); // the next one may have begun
    endings.cleanUp();
    std::_Exit(status);
}

} // namespace vistrane
