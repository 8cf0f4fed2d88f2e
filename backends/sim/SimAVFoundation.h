#pragma once

#include "platform/avfoundation/AVFoundation.h"

namespace vistrane {

class SimCameras;
class SimMovies;

/// The kit's class messages, handed on to the cameras and the movies.
class SimAVFoundation final : public AVFoundation {
public:
    SimAVFoundation(SimCameras& cameras, SimMovies& movies) : cameras_(cameras), movies_(movies) {}

    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType,
                                    AVCaptureDevicePosition position) override;
    AVCaptureDeviceInputResult
    deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) override;
    std::shared_ptr<AVCaptureSession> captureSession() override;
    std::shared_ptr<AVCapturePhotoOutput> photoOutput() override;
    std::shared_ptr<AVCapturePhotoSettings> photoSettings() override;
    std::shared_ptr<AVCapturePhotoSettings>
    photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings) override;
    std::shared_ptr<AVCaptureVideoPreviewLayer>
    layerWithSession(std::shared_ptr<AVCaptureSession> session) override;
    AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType) override;
    std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType,
                                  const NSDictionary& outputSettings) override;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) override;

private:
    SimCameras& cameras_;
    SimMovies& movies_;
};

} // namespace vistrane
