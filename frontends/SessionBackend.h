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

/// What both front ends share: the kits on real media, and how signals end the process.
///
/// One for the process; main thread only. The references given to the constructor outlive it. A
/// front end creates it with `new` and never deletes it, because threads may still be running when
/// the process ends.
class SessionBackend {
public:
    struct Options {
        /// The program's version, "MAJOR.MINOR.PATCH".
        std::string version;
        CameraOptions cameras = {};
        MovieOptions movies = {};
    };

    /// `log` takes one message without a line end, on any thread, and returns at once.
    SessionBackend(QtRunLoop& loop, NSUserDefaults& defaults,
                   std::function<void(const std::string&)> log, SessionObserver& observer,
                   const Options& options);

    /// All kits, with the front end's own AppKit kit.
    Platform platform(AppKit& appKit);

    /// Stores the folder in the settings as if the user had just confirmed it. Returns the reason
    /// if no bookmark of it can be made.
    std::optional<NSError> rememberFolder(const std::string& path);

    /// How a front end ends the process after a signal. `status` is 128 + the signal.
    struct Endings {
        /// Ends the process. Called on the main thread.
        std::function<void(int status)> end;
        /// Whether the main thread is already ending the process and should be given time to
        /// finish. Called on another thread when the main thread does not respond.
        std::function<bool()> isEnding = [] { return false; };
        /// Called last, on another thread, when the main thread does not respond.
        std::function<void()> cleanUp = [] {};
    };

    /// From now on signals end the process this way.
    void handleSignals(const Endings& endings);

    // In the order in which they need each other.
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
