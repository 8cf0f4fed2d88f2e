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

/// The wishes for one still. A settings object serves one capture only.
class AVCapturePhotoSettings : public NSObject {
public:
    /// Differs for every settings object of the process.
    virtual std::int64_t uniqueID() const = 0;
};

/// A still that has arrived.
class AVCapturePhoto : public NSObject {
public:
    /// The bytes of a picture file that `AppKit::imageWithData` reads; null when there are none.
    virtual std::shared_ptr<NSData> fileDataRepresentation() const = 0;
};

/// Gets the outcome of each requested still.
class AVCapturePhotoCaptureDelegate {
public:
    /// On the main thread, once for each request, in the order of the requests. Either `photo` or
    /// `error` is there.
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
    /// The connection for that medium; null while the session has no such input.
    virtual std::shared_ptr<AVCaptureConnection> connectionWithMediaType(AVMediaType type) = 0;

    /// Requests one still: the next new picture after this call, at full size. Never blocks. The
    /// outcome comes later, an error too, and for a session that does not run as well. The
    /// delegate outlives the output.
    virtual void capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings> settings,
                                          AVCapturePhotoCaptureDelegate& delegate) = 0;
};

} // namespace vistrane
