#pragma once

#include "backends/cameras/Cameras.h"
#include "backends/movies/Movies.h"
#include "platform/avfoundation/AVFoundation.h"

namespace vistrane {

/// The AVFoundation kit with real cameras and movies. Both outlive it.
class MediaAVFoundation final : public AVFoundation {
public:
    MediaAVFoundation(Cameras& cameras, Movies& movies) : cameras_(cameras), movies_(movies) {}

    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType,
                                    AVCaptureDevicePosition position) override {
        return cameras_.discoverySessionWithDeviceTypes(types, mediaType, position);
    }
    AVCaptureDeviceInputResult
    deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) override {
        return cameras_.deviceInputWithDevice(device);
    }
    std::shared_ptr<AVCaptureSession> captureSession() override {
        return cameras_.captureSession();
    }
    std::shared_ptr<AVCapturePhotoOutput> photoOutput() override { return cameras_.photoOutput(); }
    std::shared_ptr<AVCapturePhotoSettings> photoSettings() override {
        return cameras_.photoSettings();
    }
    std::shared_ptr<AVCapturePhotoSettings>
    photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings) override {
        return cameras_.photoSettingsFromPhotoSettings(settings);
    }
    std::shared_ptr<AVCaptureVideoPreviewLayer>
    layerWithSession(std::shared_ptr<AVCaptureSession> session) override {
        return cameras_.layerWithSession(session);
    }

    AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType) override {
        return movies_.assetWriterWithURL(url, fileType);
    }
    std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType,
                                  const NSDictionary& outputSettings) override {
        return movies_.assetWriterInputWithMediaType(mediaType, outputSettings);
    }
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) override {
        return movies_.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(std::move(input),
                                                                              attributes);
    }

private:
    Cameras& cameras_;
    Movies& movies_;
};

} // namespace vistrane
