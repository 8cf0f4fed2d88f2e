#pragma once

#include <functional>

namespace vistrane {

/// SIGINT, SIGTERM and SIGHUP end the process with the exit status 128 + signal. A SIGHUP that was
/// ignored when the program started (nohup) stays ignored. An ignored SIGINT does not: shells
/// ignore it for every background job of a script.
///
/// `block` is called before any other thread starts: the signals are blocked in this and every
/// later thread, and one dedicated thread waits for them.
class EndingSignals {
public:
    struct Handlers {
        /// Requests that the main thread end the process with that status. If empty, `force` is
        /// called at once.
        std::function<void(int status)> ask;
        /// Ends the process without the main thread, which has not responded.
        std::function<void(int status)> force;
    };

    /// Blocks the signals and starts to wait for them. Until `handle` is called, each ends the
    /// process at once, even while the main thread is blocked.
    static void block();
    /// Replaces the handlers. Main thread only.
    static void handle(Handlers handlers);
};

} // namespace vistrane
