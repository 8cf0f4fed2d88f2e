#include "tests/soak/SteppedSession.h"

#include <cstdlib>
#include <iostream>
#include <utility>

#include <gtest/gtest.h>

#include "backends/posix/free_memory.h"

namespace vistrane {

namespace {

SessionBackend::Options options() {
    useOneArena(); // as the program does before its threads
    SessionBackend::Options options{.version = "1.0.0"};
    options.cameras.findsCameras = false;
    options.cameras.demoCamera = true;
    options.movies.preset = "ultrafast";
    return options;
}

} // namespace

SteppedSession::SteppedSession(const std::string& folder)
    : backend(
          loop, defaults,
          [this](const std::string& line) {
              // On the main thread; the controller reports it in no other way.
              lost += line.starts_with("photoOutput error: ") ? 1 : 0;
          },
          observer, options()),
      appKit(std::make_shared<const ConsoleAlertRules>(
                 // Nothing here causes an alert. One of the compile thread would come without end.
                 ConsoleAlertRules{loop, [](const std::string& text) { std::cerr << text << '\n'; },
                                   []() -> NSModalResponse { std::abort(); }}),
             workspace, loop, backend.pictures, report) {
    observer.frameWasSaved = [this](const std::string&) { ++saved; };
    observer.frameCouldNotBeSaved = [this] { ++lost; };
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
