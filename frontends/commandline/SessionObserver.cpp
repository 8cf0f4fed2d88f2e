#include "frontends/commandline/SessionObserver.h"

namespace vistrane {

void SessionObserver::imageCouldNotBeRead(const std::string& path, const NSError& reason) {
    if (path.empty()) {
        stillIsLost(reason);
    } else if (!loop_.isMainThread()) {
        // The main thread loads frames to show them; only the movie's own loads count.
        report_.frameCouldNotBeRead(reason);
    }
}

void SessionObserver::fileWasWritten(const std::string& path) {
    isWritingFile_ = false;
    if (frameWasSaved) {
        frameWasSaved(path);
    }
}

void SessionObserver::fileCouldNotBeWritten(const std::string&, const NSError& reason) {
    isWritingFile_ = false;
    stillIsLost(reason);
}

void SessionObserver::stillIsLost(const NSError& reason) {
    output_.writeLine("A frame is lost: " + reason.localizedDescription);
    if (frameCouldNotBeSaved) {
        frameCouldNotBeSaved();
    }
}

void SessionObserver::movieIsWhole(const std::string& path) {
    setOutcome({path, std::nullopt});
}

void SessionObserver::movieFailed(const std::string& path, const NSError& reason) {
    setOutcome({path, reason});
}

void SessionObserver::setOutcome(MovieOutcome outcome) {
    loop_.mainQueue().async([this, outcome = std::move(outcome)] { movieOutcome = outcome; });
}

} // namespace vistrane
