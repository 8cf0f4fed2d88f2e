#include "frontends/commandline/Session.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>

#include <unistd.h>

#include "backends/console/ConsoleDispatch.h"
#include "backends/console/ConsoleFoundation.h"
#include "backends/console/ConsoleInterface.h"
#include "backends/console/ConsoleWorkspace.h"
#include "backends/console/MemoryUserDefaults.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/posix/BackgroundWriter.h"
#include "backends/posix/EndingSignals.h"
#include "core/app/AppDelegate.h"
#include "frontends/MediaAVFoundation.h"
#include "frontends/commandline/SessionAppKit.h"
#include "frontends/commandline/SessionObserver.h"
#include "frontends/commandline/version.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

CameraOptions cameraOptions(const SessionOptions& options) {
    CameraOptions result;
    result.findsCameras = options.findsCameras;
    result.demoCamera = options.demoCamera;
    return result;
}

MovieOptions movieOptions(const MovieArguments& movie) {
    MovieOptions result;
    if (!movie.preset.empty()) {
        result.preset = movie.preset;
    }
    if (movie.rateFactor) {
        result.constantRateFactor = *movie.rateFactor;
    }
    return result;
}

} // namespace

std::string outputError(int number) {
    return std::string("vistrane: Cannot write to standard output: ") + std::strerror(number) + ".";
}

/// The backend and the controller, in the order in which they need each other.
struct Session::Parts {
    explicit Parts(const SessionOptions& options)
        : cameras(dispatch, observer, cameraOptions(options)),
          movies(observer, movieOptions(options.movie)), cleanUp(options.cleanUp) {
        interface.addTo(nib);
        foundation.setThreadFailureHandler([this] { threadIsMissing = true; });
        interface.progressBar->setObserver(
            [this](double value, double maximum) { output.showProgress(value, maximum); });
    }

    NSModalResponse answer(const ConsoleAlert& alert) {
        if (alert.isOnMainThread()) {
            alertWasShown = true;
            return NSAlertFirstButtonReturn;
        }
        // The movie cannot be created. Nobody is there to answer: the command ends, and until then
        // the compile thread waits.
        loop.mainQueue().async([this] { movieWasRefused = true; });
        for (;;) {
            ::pause();
        }
    }

    /// The main thread is held up. A frame that it is just writing is waited for, and movies that
    /// are not whole are taken away, neither of them for ever: the folder's disk may not answer.
    [[noreturn]] void endWithoutMainThread(int status) {
        std::thread([status] {
            std::this_thread::sleep_for(std::chrono::seconds(5));
            std::_Exit(status);
        }).detach();
        while (observer.isWritingFile()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        movies.abandonAll();
        cleanUp();
        std::_Exit(status);
    }

    /// Nobody reads the results any more.
    void resultsFailed() {
        loop.mainQueue().async([this] { outputIsClosed = true; });
    }

    ConsoleOutput output{STDERR_FILENO};
    ConsoleRunLoop loop;
    BackgroundWriter results{STDOUT_FILENO, [this](int) { resultsFailed(); }};
    ConsoleDispatch dispatch{loop};
    MemoryUserDefaults defaults;
    ConsoleFoundation foundation{loop, defaults, output, programVersion};
    CompileReport report;
    SessionObserver observer{output, loop, report};
    Pictures pictures{observer};
    MediaCoreVideo coreVideo;
    MediaCoreGraphics coreGraphics{coreVideo};
    Cameras cameras;
    Movies movies;
    MediaAVFoundation avFoundation{cameras, movies};
    /// A finished movie is this program's output; no other program is opened for it.
    ConsoleWorkspace workspace{[](const NSURL&) { return true; }};
    SessionAppKit appKit{std::make_shared<const ConsoleAlertRules>(ConsoleAlertRules{
                             loop, [this](const std::string& text) { output.writeLine(text); },
                             [this](const ConsoleAlert& alert) { return answer(alert); }}),
                         workspace, loop, pictures, report};
    ConsoleInterface interface;
    ConsoleNib nib;
    AppDelegate controller{
        Platform{foundation, appKit, avFoundation, coreVideo, coreGraphics, dispatch}};
    const std::function<void()> cleanUp;
    std::string folder;
    bool isLaunched = false;
    bool alertWasShown = false;
    bool movieWasRefused = false;
    bool threadIsMissing = false;
    bool outputIsClosed = false;
    bool isInterrupted = false;
};

Session::Session(const SessionOptions& options) : parts_(*new Parts(options)) {
    EndingSignals::handle({[this](int status) {
                               parts_.loop.mainQueue().async([this, status] {
                                   parts_.isInterrupted = true;
                                   end(status);
                               });
                           },
                           [this](int status) { parts_.endWithoutMainThread(status); }});

    // The settings of a first run, so that the controller stores its own values, with a folder that
    // the user has confirmed.
    if (options.folder) {
        parts_.folder = *options.folder;
        const BookmarkDataResult bookmark = parts_.foundation.bookmarkDataWithOptions(
            NSURL::fileURLWithPath(*options.folder), NSURLBookmarkCreationWithSecurityScope);
        if (bookmark.error) {
            fail(bookmark.error->localizedDescription);
        }
        parts_.defaults.setObject(bookmark.data, "iData");
    }
}

void Session::launch() {
    const std::vector<std::string> missing = parts_.controller.connectInterface(parts_.nib);
    if (!missing.empty()) {
        fail("The interface has no control '" + missing.front() + "'.");
    }
    {
        // There is no interface that sets itself up meanwhile.
        const ConsoleRunLoop::HurryScope hurry(parts_.loop);
        parts_.controller.awakeFromNib();
    }
    parts_.controller.applicationDidFinishLaunching();
    parts_.isLaunched = true;
}

std::vector<std::string> Session::deviceNames() const {
    return parts_.interface.AVDevicePopUp->itemTitles();
}

std::vector<std::string> Session::frames() {
    // Ten listings: one that fails may work again, but not for ever.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    AppDelegate& controller = parts_.controller;
    waitUntil(
        [&] { return controller.pictureArray.load() || std::chrono::steady_clock::now() > limit; });
    const auto list = controller.pictureArray.load();
    if (!list) {
        fail("Cannot list the folder '" + shownText(parts_.folder) +
             "'. See that it is there and that you may read it.");
    }
    return *list;
}

void Session::pickDevice(const std::string& name) {
    const std::vector<std::string> names = deviceNames();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        std::string message = "There is no camera '" + shownText(name) + "'. ";
        message += names.empty() ? "No camera is offered." : "The cameras offered are:";
        for (const std::string& each : names) {
            message += "\n  " + each;
        }
        fail(message);
    }
    // Two cameras of one name share an item, and the items after it belong to other cameras than
    // they say.
    const auto index = static_cast<std::size_t>(found - names.begin());
    if (parts_.controller.allAVdevices.at(index)->localizedName() != name) {
        fail("Two cameras have the same name, so that the camera '" + name +
             "' cannot be told from another one. Unplug one of the two.");
    }
    parts_.interface.AVDevicePopUp->userPicks(static_cast<NSInteger>(index));
    if (parts_.alertWasShown) {
        end(1);
    }
    if (!parts_.controller.aSession->isRunning()) {
        fail("The camera '" + name + "' does not start. See that no other program uses it.");
    }
}

void Session::enterInterval(const IntervalTexts& texts) {
    const ConsoleInterface& interface = parts_.interface;
    interface.hInput->userTypes(texts[0]);
    interface.mInput->userTypes(texts[1]);
    interface.sInput->userTypes(texts[2]);
    say(interface.timeD->stringValue());
}

bool Session::capture(std::optional<int> count,
                      const std::function<void(const std::string&)>& saved) {
    ConsoleButton& startButton = *parts_.interface.startB;
    std::set<std::string> paths;
    std::string lastPath;
    int failures = 0;
    bool isOver = false;
    const auto endWhenEnough = [&] {
        const auto stills = static_cast<int>(paths.size()) + failures;
        if (!isOver && count && stills >= *count) {
            isOver = true;
            startButton.performClick();
        }
    };
    parts_.observer.frameWasSaved = [&](const std::string& path) {
        saved(path);
        lastPath = path;
        if (count) {
            paths.insert(path);
        }
        endWhenEnough();
    };
    parts_.observer.frameCouldNotBeSaved = [&] {
        ++failures;
        endWhenEnough();
    };

    waitForStampBoundary();
    startButton.performClick();
    waitUntil([&] { return isOver; });

    // Stills that were asked for before the end may still come.
    parts_.observer.frameWasSaved = saved;
    parts_.observer.frameCouldNotBeSaved = nullptr;
    waitForListing(lastPath);
    return failures == 0;
}

/// The frame list follows the folder within a tenth of a second; a frame that was taken away
/// meanwhile is not waited for.
void Session::waitForListing(const std::string& path) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    waitUntil([&] {
        const auto list = parts_.controller.pictureArray.load();
        const bool isListed = list && std::find(list->begin(), list->end(), path) != list->end();
        return isListed || std::chrono::steady_clock::now() > limit;
    });
}

std::string Session::compile(int framesPerSecond) {
    frames();
    const ConsoleInterface& interface = parts_.interface;
    interface.fpsS->userMoves(framesPerSecond);
    interface.compilingB->performClick();
    if (parts_.alertWasShown || parts_.threadIsMissing) {
        end(1);
    }
    const std::optional<MovieOutcome>& outcome = parts_.observer.movieOutcome;
    waitUntil(
        [&] { return parts_.movieWasRefused || (outcome && interface.compilingB->isEnabled()); });
    if (parts_.movieWasRefused) {
        end(1);
    }
    const CompileReport& report = parts_.report;
    for (const std::string& line :
         outcome->error ? report.linesWithoutMovie(*outcome->error) : report.lines()) {
        say(line);
    }
    if (outcome->error) {
        fail(outcome->error->localizedDescription);
    }
    if (::access(outcome->path.c_str(), F_OK) != 0) {
        fail("The movie is whole, but not at '" + shownText(outcome->path) +
             "': the project folder was moved meanwhile. Look for it there.");
    }
    return outcome->path;
}

void Session::print(const std::string& result, char end) {
    parts_.results.write(result + end);
}

void Session::say(const std::string& message) {
    parts_.output.writeLine(message);
}

void Session::end(int status) {
    parts_.output.showProgress(0.0, 0.0);
    if (parts_.isLaunched) {
        parts_.controller.applicationWillTerminate();
    }
    parts_.movies.abandonAll();
    if (parts_.isInterrupted) {
        parts_.results.flush(std::chrono::milliseconds(200));
    } else if (!parts_.results.flush()) {
        say(outputError(parts_.results.failure()));
        status = 1;
    }
    if (status != 0) {
        parts_.cleanUp();
    }
    // Threads may still be at work, so nothing is taken apart.
    std::_Exit(status);
}

void Session::fail(const std::string& message) {
    say("vistrane: " + message);
    end(1);
}

void Session::waitUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        if (parts_.outputIsClosed) {
            end(1);
        }
        parts_.loop.runUntilDate(parts_.foundation.dateWithTimeIntervalSinceNow(0.02));
    }
}

void Session::waitForStampBoundary() {
    // Frames are named by the second. With an interval of whole seconds every still falls into
    // the same part of its second; started early in one, none slips into a neighbour's.
    const double now = parts_.foundation.date().timeIntervalSince1970;
    const double fraction = now - std::floor(now);
    const double delay = fraction < 0.1 ? 0.1 - fraction : fraction > 0.4 ? 1.1 - fraction : 0.0;
    parts_.loop.runUntilDate(parts_.foundation.dateWithTimeIntervalSinceNow(delay));
}

} // namespace vistrane
