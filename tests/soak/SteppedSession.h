#pragma once

#include <functional>
#include <memory>
#include <string>

#include "backends/console/ConsoleInterface.h"
#include "backends/console/ConsoleWorkspace.h"
#include "backends/console/MemoryUserDefaults.h"
#include "core/app/AppDelegate.h"
#include "frontends/SessionBackend.h"
#include "frontends/commandline/CommandObserver.h"
#include "frontends/commandline/SessionAppKit.h"

namespace vistrane {

/// The program in the process of a test: the controller on real back ends, with the controls of the
/// command line and the demo camera. The test operates the controls and runs the loop. Needs a
/// QCoreApplication. Like a session it is never destroyed.
class SteppedSession {
public:
    /// Starts the program in that project folder, with the demo camera running.
    explicit SteppedSession(const std::string& folder);
    ~SteppedSession() = delete;

    /// Runs the loop until the condition holds.
    void runUntil(const std::function<bool()>& condition);

    /// Compiles the folder in the background.
    void startCompile();
    /// Waits for the end of the compile, and returns its outcome.
    MovieOutcome awaitMovie();

    /// Stills that became frames, and stills that did not.
    int saved = 0;
    int lost = 0;

    QtRunLoop loop;
    MemoryUserDefaults defaults;
    CompileReport report;
    CommandObserver observer{[](const std::string&) {}, loop, report};
    SessionBackend backend;
    ConsoleWorkspace workspace{[](const NSURL&) { return true; }};
    SessionAppKit appKit;
    ConsoleInterface interface;
    AppDelegate controller{backend.platform(appKit)};
};

} // namespace vistrane
