#pragma once

#include <string>
#include <vector>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// What becomes of the stills of a run, and what the window's sign of capturing says about it. A
/// run is as long as one capture timer. Main thread only.
class CaptureReport {
public:
    /// Of the capture timer, in seconds.
    struct Schedule {
        double interval = 0.0;
        double untilNext = 0.0;
        /// Whether a dialog holds the timer back.
        bool isHeldBack = false;
    };

    struct Text {
        /// One phrase, such as "Capturing every 30 s, next in 12 s, 212 saved".
        std::string status;
        /// The same without the time to the next still: it changes with the stills only.
        std::string calmStatus;
        /// Such as "3 not saved (disk full)"; empty if all were saved.
        std::string warning;
    };

    /// Forgets the stills so far.
    void begin();

    /// The back end gives the program a still, or the reason why there is none. In between, it
    /// reports what became of the file. A dialog of the program may run the loop meanwhile, so that
    /// stills may be nested.
    void stillIsBeingHandled() { handled_.push_back(false); }
    void stillWasHandled();

    void fileWasWritten();
    void fileCouldNotBeWritten(const NSError& reason);

    Text text(const Schedule& schedule) const;

private:
    void hasOutcome();

    /// Whether each still that is being handled has its outcome.
    std::vector<bool> handled_;
    int saved_ = 0;
    int lost_ = 0;
    /// Of the last still that could not be saved; empty if unknown.
    std::string reason_;
};

} // namespace vistrane
