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

    /// Before and after the program handles a still. Main thread.
    virtual void stillIsBeingHandled() {}
    virtual void stillWasHandled() {}

protected:
    CameraObserver() = default;
    ~CameraObserver() = default;
};

} // namespace vistrane
