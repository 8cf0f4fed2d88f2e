#pragma once

#include <functional>

namespace vistrane {

/// SIGINT, SIGTERM and SIGHUP end the process with the exit status 128 + signal. If SIGHUP was
/// ignored when the program started (nohup), it stays ignored. SIGINT does not, because shells
/// ignore it for every background job of a script.
///
/// Call `block` before any other thread starts: it blocks the signals in this and every later
/// thread. One dedicated thread waits for them.
class EndingSignals {
public:
    struct Handlers {
        /// Called first, if it is not empty. Returns true if the signal is taken for a request to
        /// finish instead: the process goes on, and the next signal is waited for.
        std::function<bool(int signal)> finish;
        /// Requests that the main thread end the process with that status. If empty, `force` is
        /// called immediately.
        std::function<void(int status)> ask;
        /// Ends the process without the main thread. Called if that has not responded.
        std::function<void(int status)> force;
    };

    /// Blocks the signals, and SIGCHLD, and starts to wait for them. Until `handle` is called, each
    /// signal ends the process immediately, even while the main thread is blocked.
    static void block();
    /// Replaces the handlers. Main thread only.
    static void handle(Handlers handlers);
};

} // namespace vistrane
