#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/avfoundation/AVAssetWriter.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCaptureFileOutput.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// Class messages of the AVFoundation kit. Capture: main thread only. Movies: any thread.
class AVFoundation {
public:
    virtual ~AVFoundation() = default;
    AVFoundation(const AVFoundation&) = delete;
    AVFoundation& operator=(const AVFoundation&) = delete;

    /// A null entry among the types is ignored.
    virtual std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType, AVCaptureDevicePosition position) = 0;
    /// The result is an error if there is no device, or if it is gone, busy or not permitted.
    virtual AVCaptureDeviceInputResult
    deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) = 0;
    virtual std::shared_ptr<AVCaptureSession> captureSession() = 0;
    virtual std::shared_ptr<AVCapturePhotoOutput> photoOutput() = 0;
    virtual std::shared_ptr<AVCapturePhotoSettings> photoSettings() = 0;
    /// A copy with a new id.
    virtual std::shared_ptr<AVCapturePhotoSettings>
    photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings) = 0;
    virtual std::shared_ptr<AVCaptureVideoPreviewLayer>
    layerWithSession(std::shared_ptr<AVCaptureSession> session) = 0;

    /// Fails if a file of that name exists or the folder is not writable.
    virtual AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType) = 0;
    virtual std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType, const NSDictionary& outputSettings) = 0;
    virtual std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) = 0;

protected:
    AVFoundation() = default;
};

} // namespace vistrane
