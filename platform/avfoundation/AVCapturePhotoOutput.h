#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

class AVCapturePhotoOutput;

/// The settings of one still. Use an object for one capture only.
class AVCapturePhotoSettings : public NSObject {
public:
    /// Unique within the process.
    virtual std::int64_t uniqueID() const = 0;
};

/// A still.
class AVCapturePhoto : public NSObject {
public:
    /// File data for `AppKit::imageWithData`; null if there are none.
    virtual std::shared_ptr<NSData> fileDataRepresentation() const = 0;
};

/// Receives the outcome of each requested still.
class AVCapturePhotoCaptureDelegate {
public:
    /// Called on the main thread, once for each request, in the order of the requests. Exactly one
    /// of `photo` and `error` is set. `photo` is valid during the call.
    virtual void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput& output,
                                                       const AVCapturePhoto* photo,
                                                       const std::optional<NSError>& error) = 0;

protected:
    ~AVCapturePhotoCaptureDelegate() = default;
};

/// A path from a session's input to an output.
class AVCaptureConnection : public NSObject {};

/// Takes stills from a running session. Main thread only.
class AVCapturePhotoOutput : public NSObject {
public:
    /// The connection for that media type; null if the session has no such input.
    virtual std::shared_ptr<AVCaptureConnection> connectionWithMediaType(AVMediaType type) = 0;

    /// Requests one still: the first picture taken after this call, at full size. Never blocks. The
    /// delegate is always called later, never from within this call, even if the request fails or
    /// the session is not running. The delegate outlives the output.
    virtual void capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings> settings,
                                          AVCapturePhotoCaptureDelegate& delegate) = 0;
};

} // namespace vistrane
