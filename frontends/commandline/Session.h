#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backends/movies/MovieObserver.h"
#include "frontends/commandline/Arguments.h"
#include "frontends/commandline/CompileReport.h"

namespace vistrane {

/// The message for a failure of standard output. `number` is an errno value.
std::string outputError(int number);

/// What a command needs from a session.
struct SessionOptions {
    /// The project folder, already checked. Nothing for a command without one.
    std::optional<std::string> folder = std::nullopt;
    /// Whether to look for the machine's cameras.
    bool findsCameras = false;
    bool demoCamera = false;
    bool demoBars = false;
    MovieArguments movie = {};
    Verbosity verbosity = Verbosity::usual;
    /// Called last when the process ends with an exit status other than 0. Any thread.
    std::function<void()> cleanUp = [] {};
};

/// The program without a window: the controller with plain controls and real media. The session
/// operates the controls like a user, and reads the outcome from the controls and the disk. One for
/// the process; main thread only.
///
/// The settings are those of a first run in which the user has confirmed the folder. They exist
/// only in memory. SIGINT, SIGHUP and SIGTERM end the process at any time, with exit status 128 +
/// the signal, and leave no unfinished file.
class Session {
public:
    explicit Session(const SessionOptions& options);
    /// A session ends with the process: see `end`.
    ~Session() = delete;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Loads the interface and starts the controller.
    void launch();

    // ---- What a user sees --------------------------------------------------------------------
    std::vector<std::string> deviceNames() const;
    /// Waits for the first listing of the folder. Ends the process if there is none.
    std::vector<std::string> frames();

    // ---- What a user does --------------------------------------------------------------------
    /// Selects the device. Ends the process if it does not exist or cannot be opened.
    void pickDevice(const std::string& name);
    void enterInterval(const IntervalTexts& texts);
    /// Captures until the given end, or until the process ends. With `endsAtInterrupt` the first
    /// SIGINT ends the capture and not the process. Calls `saved` with the path of each frame.
    /// Returns false if a still could not be saved.
    bool capture(const CaptureEnd& end, bool endsAtInterrupt,
                 const std::function<void(const std::string&)>& saved);

    struct Movie {
        FinishedMovie facts;
        std::vector<CompileReport::LeftOut> leftOut;
    };
    /// Compiles the folder and returns the finished movie. Ends the process if that fails.
    Movie compile(int framesPerSecond);

    // ---- Output ------------------------------------------------------------------------------
    /// Writes a result and `end` to standard output. Does not block. If nobody can read
    /// standard output any more, the process ends with status 1. After any other failure the result
    /// is discarded, and the status at the end is 1.
    void print(const std::string& result, char end = '\n');
    /// Writes a warning and a newline to standard error.
    void warn(const std::string& message);
    /// The same for what was done, which --quiet leaves out.
    void say(const std::string& message);

    /// Ends the process with that exit status, as if the user had quit: stops the camera session
    /// and removes unfinished movies. Does not wait for other threads.
    [[noreturn]] void end(int status);
    /// Writes the message to standard error, then ends the process with status 1.
    [[noreturn]] void fail(const std::string& message);

private:
    struct Parts;

    /// As the fields show it.
    std::chrono::seconds interval() const;
    void warnAll(const std::vector<std::string>& messages);
    void waitUntil(const std::function<bool()>& condition);
    void waitForStampBoundary();
    void waitForListing(const std::string& path);

    Parts& parts_;
};

} // namespace vistrane
