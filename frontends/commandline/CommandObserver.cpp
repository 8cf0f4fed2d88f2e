#include "frontends/commandline/CommandObserver.h"

#include <utility>

namespace vistrane {

void CommandObserver::imageCouldNotBeRead(const std::string& path, const NSError& reason) {
    if (path.empty()) {
        logLostFrame(reason);
        stillIsLost();
    } else if (!loop_.isMainThread()) {
        // Only the compile thread loads frames for the movie. The main thread loads them to show
        // them.
        report_.frameCouldNotBeRead(reason);
    }
}

void CommandObserver::fileWasWritten(const std::string& path) {
    SessionObserver::fileWasWritten(path);
    if (frameWasSaved) {
        frameWasSaved(path);
    }
}

void CommandObserver::fileCouldNotBeWritten(const std::string& path, const NSError& reason) {
    SessionObserver::fileCouldNotBeWritten(path, reason);
    stillIsLost();
}

void CommandObserver::stillIsLost() {
    if (frameCouldNotBeSaved) {
        frameCouldNotBeSaved();
    }
}

void CommandObserver::setOutcome(MovieOutcome outcome) {
    loop_.mainQueue().async([this, outcome = std::move(outcome)] { movieOutcome = outcome; });
}

} // namespace vistrane
