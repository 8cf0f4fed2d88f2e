#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

enum AVCaptureDeviceType {
    AVCaptureDeviceTypeBuiltInWideAngleCamera,
    AVCaptureDeviceTypeExternalUnknown,
};

enum AVCaptureDevicePosition { AVCaptureDevicePositionUnspecified = 0 };

enum AVCaptureSessionPreset { AVCaptureSessionPresetPhoto, AVCaptureSessionPresetHigh };

/// A camera or camcorder. Main thread only.
class AVCaptureDevice : public NSObject {
public:
    virtual bool hasMediaType(AVMediaType type) const = 0;
    /// Valid UTF-8.
    virtual std::string localizedName() const = 0;
    /// The photo preset needs a device that offers raw or JPEG pictures, not only an encoded
    /// stream.
    virtual bool supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const = 0;
};

/// A query for devices and its result. Main thread only.
class AVCaptureDeviceDiscoverySession : public NSObject {
public:
    /// In the order of the system.
    virtual std::vector<std::shared_ptr<AVCaptureDevice>> devices() const = 0;
};

/// A device as the source of a session. Main thread only.
class AVCaptureDeviceInput : public NSObject {
public:
    virtual std::shared_ptr<AVCaptureDevice> device() const = 0;
};

/// An input, or the reason why there is none.
struct AVCaptureDeviceInputResult {
    std::shared_ptr<AVCaptureDeviceInput> input;
    std::optional<NSError> error;
};

} // namespace vistrane
