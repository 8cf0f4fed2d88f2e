#include "frontends/commandline/Session.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <set>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "backends/cameras/AwakeClock.h"
#include "backends/console/ConsoleInterface.h"
#include "backends/console/ConsoleOutput.h"
#include "backends/console/ConsoleWorkspace.h"
#include "backends/console/MemoryUserDefaults.h"
#include "backends/posix/BackgroundWriter.h"
#include "backends/qt/loop/core_application.h"
#include "core/app/AppDelegate.h"
#include "core/capture/interval.h"
#include "frontends/SessionBackend.h"
#include "frontends/commandline/CommandObserver.h"
#include "frontends/commandline/SessionAppKit.h"
#include "frontends/commandline/log_lines.h"
#include "frontends/commandline/progress_texts.h"
#include "frontends/commandline/version.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

CameraOptions cameraOptions(const SessionOptions& options) {
    CameraOptions result;
    result.findsCameras = options.findsCameras;
    result.demoCamera = options.demoCamera;
    result.demoBars = options.demoBars;
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
    result.path = movie.output;
    result.replaces = movie.replaces;
    return result;
}

/// How long the end waits for a reader of the messages that reads nothing.
constexpr std::chrono::milliseconds messageTimeout{5000};
/// How long the end after a signal waits for readers.
constexpr std::chrono::milliseconds signalTimeout{200};

/// Without a still for this time and three intervals, a capture of a number of stills has failed.
constexpr std::chrono::seconds captureTimeout{60};

bool isSameDevice(int one, int other) {
    struct stat first {};
    struct stat second {};
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 && S_ISCHR(first.st_mode) &&
           S_ISCHR(second.st_mode) && first.st_rdev == second.st_rdev;
}

std::size_t entryCount(const std::string& folder) {
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    std::size_t count = 0;
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        ++count;
    }
    return count;
}

} // namespace

std::string outputError(int number) {
    return std::string("vistrane: Cannot write to standard output: ") + std::strerror(number) + ".";
}

/// The back end and the controller, in the order of their dependencies.
struct Session::Parts {
    explicit Parts(const SessionOptions& options)
        : verbosity(options.verbosity),
          backend(loop, defaults, systemLog, observer,
                  {programVersion, cameraOptions(options), movieOptions(options.movie)}),
          cleanUp(options.cleanUp) {
        backend.foundation.setThreadFailureHandler([this] { threadIsMissing = true; });
    }

    /// Any thread. The stills that the camera did not deliver are known from their log lines only.
    void writeLogLine(const std::string& line) {
        if (verbosity == Verbosity::verbose || !isDetail(line)) {
            output.writeLine(line);
        }
        if (isLostStill(line)) {
            ++undelivered;
        }
    }

    NSModalResponse answer() {
        if (loop.isMainThread()) {
            alertWasShown = true;
            return NSAlertFirstButtonReturn;
        }
        // The movie cannot be created. The compile thread waits here until the main thread ends the
        // process.
        loop.mainQueue().async([this] { movieWasRefused = true; });
        for (;;) {
            ::pause();
        }
    }

    /// A reader that has gone wants no more results. After any other error, such as a full disk,
    /// later ones may be written again.
    void outputFailed(int error) {
        outputIsClosed = outputIsClosed || error == EPIPE || error == EBADF;
        if (isCapturing && !outputIsClosed && !std::exchange(outputFailureIsTold, true)) {
            output.writeLine(outputError(error) + " Capturing goes on.");
        }
    }

    const Verbosity verbosity;
    ConsoleOutput output{STDERR_FILENO};
    const bool showsProgress = output.isTerminal() && verbosity != Verbosity::quiet;
    /// Whether the paths of frames go to the terminal that shows the progress. They are written
    /// like messages then, which never meet the progress on one line.
    const bool sharesTerminal = showsProgress && isSameDevice(STDOUT_FILENO, STDERR_FILENO);
    bool isCapturing = false;
    std::atomic<int> undelivered = 0;
    const std::function<void(const std::string&)> log = [this](const std::string& line) {
        output.writeLine(line);
    };
    const std::function<void(const std::string&)> systemLog = [this](const std::string& line) {
        writeLogLine(line);
    };
    QtRunLoop loop;
    BackgroundWriter results{STDOUT_FILENO, [this](int error) {
                                 loop.mainQueue().async([this, error] { outputFailed(error); });
                             }};
    MemoryUserDefaults defaults;
    CompileReport report;
    CommandObserver observer{log, loop, report};
    SessionBackend backend;
    /// Opens nothing: the command prints the movie's path instead.
    ConsoleWorkspace workspace{[](const NSURL&) { return true; }};
    SessionAppKit appKit{std::make_shared<const ConsoleAlertRules>(
                             ConsoleAlertRules{loop, log, [this] { return answer(); }}),
                         workspace, loop, backend.pictures, report};
    ConsoleInterface interface;
    AppDelegate controller{backend.platform(appKit)};
    const std::function<void()> cleanUp;
    std::string folder;
    bool isLaunched = false;
    bool alertWasShown = false;
    bool movieWasRefused = false;
    bool threadIsMissing = false;
    bool outputIsClosed = false;
    bool outputFailureIsTold = false;
    bool isInterrupted = false;
    /// Whether the next SIGINT ends a capture instead of the process. Any thread.
    std::atomic<bool> interruptEndsCapture = false;
    bool captureWasInterrupted = false;
};

Session::Session(const SessionOptions& options)
    : parts_((makeCoreApplication(), *new Parts(options))) {
    SessionBackend::Endings endings;
    endings.finish = [this](int signal) {
        if (signal != SIGINT || !parts_.interruptEndsCapture.exchange(false)) {
            return false;
        }
        parts_.loop.mainQueue().async([this] { parts_.captureWasInterrupted = true; });
        return true;
    };
    endings.end = [this](int status) {
        parts_.isInterrupted = true;
        end(status);
    };
    endings.cleanUp = [this] {
        parts_.cleanUp();
        parts_.results.flush(signalTimeout);
        parts_.output.flush(signalTimeout);
    };
    parts_.backend.handleSignals(endings);
    if (options.folder) {
        parts_.folder = *options.folder;
        if (const auto error = parts_.backend.rememberFolder(*options.folder)) {
            fail(error->localizedDescription);
        }
    }
}

void Session::launch() {
    const std::vector<std::string> missing = parts_.controller.connectInterface(parts_.interface);
    if (!missing.empty()) {
        fail("The interface has no control '" + missing.front() + "'.");
    }
    {
        // The controller runs the loop so that the interface is drawn, which is not needed here.
        const QtRunLoop::HurryScope hurry(parts_.loop);
        parts_.controller.awakeFromNib();
    }
    parts_.controller.applicationDidFinishLaunching();
    parts_.isLaunched = true;
}

std::vector<std::string> Session::deviceNames() const {
    return parts_.interface.AVDevicePopUp->itemTitles();
}

std::vector<std::string> Session::frames() {
    // Enough for ten listings, because a later one may succeed.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    AppDelegate& controller = parts_.controller;
    waitUntil(
        [&] { return controller.pictureArray.load() || std::chrono::steady_clock::now() > limit; });
    const auto list = controller.pictureArray.load();
    if (!list) {
        fail("Cannot list the folder '" + shownText(parts_.folder) +
             "'. See that it is there and that you may read it.");
    }
    if (const std::size_t entries = list->empty() ? entryCount(parts_.folder) : 0) {
        warn("There are no frames in '" + shownText(parts_.folder) + "': 0 of " +
             std::to_string(entries) + " entries end in '.png'.");
    }
    return *list;
}

void Session::pickDevice(const std::string& name) {
    const std::vector<std::string> names = deviceNames();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        std::string message = "There is no camera '" + shownText(name) + "'. ";
        message += names.empty()
                       ? "No camera is offered. --demo-camera offers one to try things with."
                       : "The cameras offered are:";
        for (const std::string& each : names) {
            message += "\n  " + each;
        }
        fail(message);
    }
    // Two cameras of the same name share an item, so all later items have the index of another
    // camera.
    const auto index = static_cast<std::size_t>(found - names.begin());
    if (parts_.controller.allAVdevices.at(index)->localizedName() != name) {
        fail("Two cameras have the same name, so the camera '" + name +
             "' cannot be distinguished from another one. Unplug one of the two.");
    }
    parts_.interface.AVDevicePopUp->userPicks(static_cast<NSInteger>(index));
    if (parts_.alertWasShown) {
        end(1);
    }
    if (!parts_.controller.aSession->isRunning()) {
        fail("The camera '" + name + "' does not start. Check that no other program uses it.");
    }
}

void Session::enterInterval(const IntervalTexts& texts) {
    const ConsoleInterface& interface = parts_.interface;
    interface.hInput->userTypes(texts[0]);
    interface.mInput->userTypes(texts[1]);
    interface.sInput->userTypes(texts[2]);
    if (parts_.verbosity == Verbosity::verbose) {
        say(interface.timeD->stringValue());
    }
}

std::chrono::seconds Session::interval() const {
    const ConsoleInterface& interface = parts_.interface;
    return std::chrono::seconds(totalSeconds(
        interface.hInput->intValue(), interface.mInput->intValue(), interface.sInput->intValue()));
}

bool Session::capture(const CaptureEnd& end, bool endsAtInterrupt,
                      const std::function<void(const std::string&)>& saved) {
    ConsoleButton& startButton = *parts_.interface.startB;
    std::set<std::string> paths;
    std::string lastPath;
    int savedStills = 0;
    int failures = 0;
    bool isOver = false;
    const auto timeout = captureTimeout + 3 * interval();
    AwakeClock clock; // a pause of the process is not the camera's silence
    auto lastOutcome = clock.now();
    const auto stop = [&] {
        isOver = true;
        startButton.performClick();
    };
    const auto endWhenEnough = [&] {
        lastOutcome = clock.now();
        const auto stills = static_cast<int>(paths.size()) + failures;
        if (!isOver && end.count && stills >= *end.count) {
            stop();
        }
    };
    parts_.observer.frameWasSaved = [&](const std::string& path) {
        saved(path);
        lastPath = path;
        ++savedStills;
        if (end.count) {
            paths.insert(path);
        }
        endWhenEnough();
    };
    parts_.observer.frameCouldNotBeSaved = [&] {
        ++failures;
        endWhenEnough();
    };

    waitForStampBoundary();
    parts_.isCapturing = true;
    parts_.interruptEndsCapture = endsAtInterrupt;
    startButton.performClick();
    const auto started = std::chrono::steady_clock::now();
    waitUntil([&] {
        const auto now = std::chrono::steady_clock::now();
        if (parts_.showsProgress) {
            parts_.output.showStatus(
                captureProgress({savedStills, failures + parts_.undelivered, end.count,
                                 timeToNext(now - started, interval())}));
        }
        if (!isOver &&
            ((end.duration && now >= started + *end.duration) ||
             (end.until && std::time(nullptr) >= *end.until) || parts_.captureWasInterrupted)) {
            stop();
        }
        if (end.count && clock.now() > lastOutcome + timeout) {
            fail("The camera has given no still for " + std::to_string(timeout.count()) +
                 " seconds. See that it works and that no other program uses it.");
        }
        return isOver;
    });
    // The camera answers each request, if only with an error.
    waitUntil(
        [&] { return parts_.observer.openStills == 0 || clock.now() > lastOutcome + timeout; });

    parts_.isCapturing = false;
    parts_.interruptEndsCapture = false;
    parts_.output.showStatus({});
    parts_.observer.frameWasSaved = saved;
    parts_.observer.frameCouldNotBeSaved = nullptr;
    waitForListing(lastPath);
    return failures == 0;
}

/// Waits until the frame list has this frame. That takes a tenth of a second, or two seconds on a
/// file system that does not tell when a folder changed. Stops after three, because the frame may
/// have been deleted.
void Session::waitForListing(const std::string& path) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    waitUntil([&] {
        const auto list = parts_.controller.pictureArray.load();
        const bool isListed = list && std::find(list->begin(), list->end(), path) != list->end();
        return isListed || std::chrono::steady_clock::now() > limit;
    });
}

Session::Movie Session::compile(int framesPerSecond) {
    frames();
    const ConsoleInterface& interface = parts_.interface;
    interface.fpsS->userMoves(framesPerSecond);
    if (parts_.showsProgress) {
        const auto started = std::chrono::steady_clock::now();
        interface.progressBar->setObserver([this, started](double value, double maximum) {
            parts_.output.showProgress(
                value, maximum,
                compileProgress(value, maximum, std::chrono::steady_clock::now() - started));
        });
    }
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
    warnAll(outcome->error ? report.linesWithoutMovie(*outcome->error) : report.lines());
    if (outcome->error) {
        fail(outcome->error->localizedDescription);
    }
    say(report.summary());
    if (::access(outcome->movie.path.c_str(), F_OK) != 0) {
        fail("The movie is complete, but not at '" + shownText(outcome->movie.path) +
             "': the project folder was moved meanwhile, and the movie with it.");
    }
    return {outcome->movie, report.leftOut()};
}

void Session::print(const std::string& result, char end) {
    if (parts_.isCapturing && parts_.sharesTerminal) {
        parts_.output.writeLine(result);
    } else {
        parts_.results.write(result + end);
    }
}

void Session::warn(const std::string& message) {
    parts_.output.writeLine(message);
}

/// Waits for a reader that reads, so that none of many messages is left out.
void Session::warnAll(const std::vector<std::string>& messages) {
    constexpr std::size_t few = 1000;
    bool isRead = true;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        isRead = isRead && (i % few != 0 || parts_.output.flushWhileRead(messageTimeout));
        warn(messages[i]);
    }
}

void Session::say(const std::string& message) {
    if (parts_.verbosity != Verbosity::quiet) {
        parts_.output.writeLine(message);
    }
}

void Session::end(int status) {
    parts_.output.showStatus({});
    if (parts_.isLaunched) {
        parts_.controller.applicationWillTerminate();
    }
    parts_.backend.endMovies(status);
    if (parts_.isInterrupted) {
        parts_.results.flush(signalTimeout);
    } else if (!parts_.results.flush()) {
        warn(outputError(parts_.results.failure()));
        status = 1;
    }
    if (status != 0) {
        parts_.cleanUp();
    }
    if (parts_.isInterrupted) {
        parts_.output.flush(signalTimeout);
    } else {
        parts_.output.flushWhileRead(messageTimeout);
    }
    // Other threads may still be running, so nothing is destroyed.
    std::_Exit(status);
}

void Session::fail(const std::string& message) {
    warn("vistrane: " + message);
    end(1);
}

void Session::waitUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        if (parts_.outputIsClosed) {
            end(1);
        }
        parts_.loop.runUntilDate(parts_.backend.foundation.dateWithTimeIntervalSinceNow(0.02));
    }
}

void Session::waitForStampBoundary() {
    // Frame names have a resolution of one second, and each still arrives a little late. Starting
    // early in a second gives every still a different second.
    const double now = parts_.backend.foundation.date().timeIntervalSince1970;
    const double fraction = now - std::floor(now);
    const double delay = fraction < 0.1 ? 0.1 - fraction : fraction > 0.4 ? 1.1 - fraction : 0.0;
    parts_.loop.runUntilDate(parts_.backend.foundation.dateWithTimeIntervalSinceNow(delay));
}

} // namespace vistrane
