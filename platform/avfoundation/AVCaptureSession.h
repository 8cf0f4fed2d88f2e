#pragma once

#include <memory>
#include <vector>

#include "platform/appkit/CALayer.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Moves pictures from an input to outputs and a preview. Main thread only.
class AVCaptureSession : public NSObject {
public:
    virtual void setSessionPreset(AVCaptureSessionPreset preset) = 0;

    virtual bool canAddOutput(const AVCapturePhotoOutput& output) const = 0;
    virtual void addOutput(std::shared_ptr<AVCapturePhotoOutput> output) = 0;

    /// A copy of the list of inputs.
    virtual std::vector<std::shared_ptr<AVCaptureDeviceInput>> inputs() const = 0;
    virtual void addInput(std::shared_ptr<AVCaptureDeviceInput> input) = 0;
    virtual void removeInput(const AVCaptureDeviceInput& input) = 0;

    /// Synchronous: when it returns, the session runs, unless it has no input.
    virtual void startRunning() = 0;
    virtual void stopRunning() = 0;

    /// Stays true while the session waits for a disconnected camera.
    virtual bool isRunning() const = 0;
};

/// A layer that shows a session's pictures, aspect kept.
class AVCaptureVideoPreviewLayer : public CALayer {};

} // namespace vistrane
