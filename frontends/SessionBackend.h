#pragma once

#include <functional>
#include <optional>
#include <string>

#include "backends/cameras/Cameras.h"
#include "backends/movies/Movies.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/pictures/Pictures.h"
#include "backends/qt/loop/QtDispatch.h"
#include "backends/qt/loop/QtFoundation.h"
#include "frontends/MediaAVFoundation.h"
#include "frontends/SessionObserver.h"
#include "platform/platform.h"

namespace vistrane {

/// What both front ends share: the kits with real media, and ending the process on signals.
///
/// One for the process; main thread only. The constructor's references outlive it. A front end
/// creates it with `new` and never deletes it, because threads may still be running when the
/// process ends.
class SessionBackend {
public:
    struct Options {
        /// The program's version, "MAJOR.MINOR.PATCH".
        std::string version;
        CameraOptions cameras = {};
        MovieOptions movies = {};
    };

    /// `log` gets one message without a newline, on any thread, and must return immediately.
    SessionBackend(QtRunLoop& loop, NSUserDefaults& defaults,
                   std::function<void(const std::string&)> log, SessionObserver& observer,
                   const Options& options);

    /// All kits, with the front end's AppKit kit.
    Platform platform(AppKit& appKit);

    /// Stores the folder in the settings as if the user had just confirmed it. Returns the reason
    /// if that fails.
    std::optional<NSError> rememberFolder(const std::string& path);

    /// How a front end ends the process after a signal. `status` is 128 + the signal.
    struct Endings {
        /// Whether that signal only asks to finish. Called on another thread.
        std::function<bool(int signal)> finish = [](int) { return false; };
        /// Ends the process. Called on the main thread.
        std::function<void(int status)> end;
        /// Whether the main thread is already ending the process, and does more than to wait for
        /// movies. Called on another thread if the main thread does not respond.
        std::function<bool()> isEnding = [] { return false; };
        /// Called when `isEnding` is false, on another thread, if the main thread does not respond.
        std::function<void()> saveSettings = [] {};
        /// Called last, on another thread, if the main thread does not respond.
        std::function<void()> cleanUp = [] {};
    };

    /// From now on signals end the process with these functions.
    void handleSignals(const Endings& endings);

    /// Before the process ends with `status`: cancels the movies that are still being made, and
    /// waits for those that only need to be finished, after a signal for five seconds at most.
    void endMovies(int status);

    // in the order of their dependencies
    QtDispatch dispatch;
    NotificationCenter notificationCenter;
    QtFoundation foundation;
    Pictures pictures;
    MediaCoreVideo coreVideo;
    MediaCoreGraphics coreGraphics{coreVideo};
    Cameras cameras;
    Movies movies;
    MediaAVFoundation avFoundation{cameras, movies};

private:
    [[noreturn]] void endWithoutMainThread(int status, const Endings& endings);

    QtRunLoop& loop_;
    NSUserDefaults& defaults_;
    SessionObserver& observer_;
};

} // namespace vistrane
