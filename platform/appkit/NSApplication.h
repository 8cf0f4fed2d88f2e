#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Receives the application's notifications, on the main thread.
class NSApplicationDelegate {
public:
    /// Called once, after the interface file was loaded and before the run loop starts.
    virtual void applicationDidFinishLaunching() = 0;
    /// Called once, right before the process ends normally.
    virtual void applicationWillTerminate() = 0;
    /// Whether the program ends when its last window is closed.
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;

protected:
    ~NSApplicationDelegate() = default;
};

enum NSApplicationActivationPolicy : NSInteger {
    /// A task-bar entry and a menu bar.
    NSApplicationActivationPolicyRegular = 0,
    /// Neither.
    NSApplicationActivationPolicyAccessory = 1
};

/// The program as the desktop sees it. Main thread only.
class NSApplication : public NSObject {
public:
    virtual void miniaturizeAll(NSObject* sender) = 0;
    /// Takes effect immediately. Returns whether the policy has changed.
    virtual bool setActivationPolicy(NSApplicationActivationPolicy policy) = 0;
    /// Brings the program to the front. The program always passes true.
    virtual void activateIgnoringOtherApps(bool ignoring) = 0;
};

/// Loads the interface file, runs the application loop and returns the process's exit status.
/// Defined by the front end that the program is linked with.
int NSApplicationMain(int argc, char** argv);

} // namespace vistrane
