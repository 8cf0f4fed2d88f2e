#pragma once

#include <string>

namespace vistrane {

/// Receives what the kit does not report to the program, for a front end to show. Called on any
/// thread; returns soon and throws nothing. Outlives every camera object.
class CameraObserver {
public:
    /// The camera in use stopped giving pictures, or gives them again. `message` is one line.
    virtual void cameraChanged(const std::string& message) { (void)message; }

protected:
    CameraObserver() = default;
    ~CameraObserver() = default;
};

} // namespace vistrane
