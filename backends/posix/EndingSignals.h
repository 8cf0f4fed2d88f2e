#pragma once

#include <functional>

namespace vistrane {

/// Interrupts, hang-ups and terminations, as the exit status 128 + the signal. Hang-ups that were
/// ignored when the program started, as nohup has it, stay ignored; interrupts do not, as shells
/// ignore them for every program that a script puts into the background.
///
/// Made before any other thread: the signals are blocked in this and every later thread, and a
/// thread of its own waits for them.
class EndingSignals {
public:
    struct Handlers {
        /// Asks the main thread to end the process with that status. Without it `force` is called
        /// at once.
        std::function<void(int status)> ask;
        /// Ends the process without the main thread, which has not answered.
        std::function<void(int status)> force;
    };

    /// Blocks the signals and waits for them. Until `handle` is called, each ends the process at
    /// once, whatever the main thread is held up by.
    static void block();
    /// Handles signals so from now on. Main thread only.
    static void handle(Handlers handlers);
};

} // namespace vistrane
