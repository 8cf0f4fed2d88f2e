#pragma once

#include <string>

namespace vistrane {

/// Receives events that the kit does not report to the program, for a front end to show. Called on
/// any thread; must return quickly and not throw. Outlives every camera object.
class CameraObserver {
public:
    /// The current camera has stopped delivering pictures, or delivers them again, or the cameras
    /// cannot be listed. `message` is one line.
    virtual void cameraChanged(const std::string& message) { (void)message; }

    /// The program has requested a still. Main thread.
    virtual void stillWasRequested() {}
    /// Before and after the program handles a still, or the reason why there is none. Main thread.
    virtual void stillIsBeingHandled() {}
    virtual void stillWasHandled() {}

protected:
    CameraObserver() = default;
    ~CameraObserver() = default;
};

} // namespace vistrane
