#include "tests/soak/SteppedSession.h"

#include <utility>

#include <unistd.h>

#include <gtest/gtest.h>

namespace vistrane {

namespace {

SessionBackend::Options options() {
    SessionBackend::Options options{.version = "1.0.0"};
    options.cameras.findsCameras = false;
    options.cameras.demoCamera = true;
    options.movies.preset = "ultrafast";
    return options;
}

} // namespace

SteppedSession::SteppedSession(const std::string& folder)
    : backend(
          loop, defaults, [](const std::string&) {}, observer, options()),
      appKit(std::make_shared<const ConsoleAlertRules>(
                 ConsoleAlertRules{loop, [](const std::string& text) { ADD_FAILURE() << text; },
                                   [this] {
                                       // The compile thread would show the alert again and again.
                                       while (!loop.isMainThread()) {
                                           ::pause();
                                       }
                                       return NSAlertFirstButtonReturn;
                                   }}),
             workspace, loop, backend.pictures, report) {
    EXPECT_FALSE(backend.rememberFolder(folder));
    EXPECT_TRUE(controller.connectInterface(interface).empty());
    {
        const QtRunLoop::HurryScope hurry(loop);
        controller.awakeFromNib();
    }
    controller.applicationDidFinishLaunching();
    interface.AVDevicePopUp->userPicks(0);
    EXPECT_TRUE(controller.aSession->isRunning());
}

void SteppedSession::runUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        loop.runUntilDate(backend.foundation.dateWithTimeIntervalSinceNow(0.005));
    }
}

void SteppedSession::startCompile() {
    observer.movieOutcome.reset();
    interface.compilingB->performClick();
}

MovieOutcome SteppedSession::awaitMovie() {
    runUntil([this] { return observer.movieOutcome && interface.compilingB->isEnabled(); });
    return *std::exchange(observer.movieOutcome, std::nullopt);
}

} // namespace vistrane
