#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frontends/commandline/Arguments.h"

namespace vistrane {

/// What is said when standard output fails with that error number.
std::string outputError(int number);

/// What a command needs of the machine.
struct SessionOptions {
    /// The project folder, checked; nothing for a command without one.
    std::optional<std::string> folder = std::nullopt;
    /// Whether the machine's cameras are looked for.
    bool findsCameras = false;
    bool demoCamera = false;
    MovieArguments movie = {};
    /// Called last when the process ends with another exit status than 0. Any thread.
    std::function<void()> cleanUp = [] {};
};

/// The program without a window: the controller with plain controls, real media and its own run
/// loop, driven as a user would drive it. One for the process; main thread only.
///
/// A session starts from settings of its own, in memory: those of a first run, in which the folder
/// counts as confirmed.
/// An interrupt, a hang-up or a termination ends the process at any moment, with 128 + the signal
/// as its exit status and nothing half-written. What a command does next is decided by looking at
/// what the controls show and what has reached the disk.
class Session {
public:
    explicit Session(const SessionOptions& options);
    /// Sessions end with the process: see `end`.
    ~Session() = delete;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Loads the interface and starts the controller.
    void launch();

    // ---- What a user sees --------------------------------------------------------------------
    std::vector<std::string> deviceNames() const;
    /// Waits for the folder's first listing. Ends the process when it cannot be listed.
    std::vector<std::string> frames();

    // ---- What a user does --------------------------------------------------------------------
    /// Picks the device; ends the process when it cannot be opened or there is none of that name.
    void pickDevice(const std::string& name);
    void enterInterval(const IntervalTexts& texts);
    /// Captures until `count` frames are saved, without a count for ever; calls `saved` with each
    /// frame's path. Returns false when a still could not be saved.
    bool capture(std::optional<int> count, const std::function<void(const std::string&)>& saved);
    /// Compiles the folder and returns the movie's path when it is whole; ends the process when it
    /// fails or is refused.
    std::string compile(int framesPerSecond);

    // ---- Output ------------------------------------------------------------------------------
    /// One result to standard output, ended by `end`. Returns at once, read or not; the process
    /// ends with status 1 when nobody can read it.
    void print(const std::string& result, char end = '\n');
    /// One message to standard error.
    void say(const std::string& message);

    /// Ends the process with that exit status, as a user quits: session stopped, movies that are
    /// not whole taken away. Nothing is waited for.
    [[noreturn]] void end(int status);
    /// Says why, then ends with status 1.
    [[noreturn]] void fail(const std::string& message);

private:
    struct Parts;

    void waitUntil(const std::function<bool()>& condition);
    void waitForStampBoundary();
    void waitForListing(const std::string& path);

    Parts& parts_;
};

} // namespace vistrane
