#include "backends/sim/SimAVFoundation.h"

#include <utility>

#include "backends/sim/SimCameras.h"
#include "backends/sim/SimMovies.h"

namespace vistrane {

std::shared_ptr<AVCaptureDeviceDiscoverySession> SimAVFoundation::discoverySessionWithDeviceTypes(
    const std::vector<std::optional<AVCaptureDeviceType>>& types, AVMediaType mediaType,
    AVCaptureDevicePosition position) {
    return cameras_.discover(types, mediaType, position);
}

AVCaptureDeviceInputResult
SimAVFoundation::deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) {
    return cameras_.input(device);
}

std::shared_ptr<AVCaptureSession> SimAVFoundation::captureSession() {
    return cameras_.makeSession();
}

std::shared_ptr<AVCapturePhotoOutput> SimAVFoundation::photoOutput() {
    return cameras_.makeOutput();
}

std::shared_ptr<AVCapturePhotoSettings> SimAVFoundation::photoSettings() {
    return cameras_.makeSettings();
}

std::shared_ptr<AVCapturePhotoSettings>
SimAVFoundation::photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings) {
    return cameras_.copySettings(settings);
}

std::shared_ptr<AVCaptureVideoPreviewLayer>
SimAVFoundation::layerWithSession(std::shared_ptr<AVCaptureSession> session) {
    return cameras_.makeLayer(session);
}

AVAssetWriterResult SimAVFoundation::assetWriterWithURL(const NSURL& url, AVFileType fileType) {
    return movies_.makeWriter(url, fileType);
}

std::shared_ptr<AVAssetWriterInput>
SimAVFoundation::assetWriterInputWithMediaType(AVMediaType mediaType,
                                               const NSDictionary& outputSettings) {
    return movies_.makeInput(mediaType, outputSettings);
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
SimAVFoundation::assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
    std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) {
    return movies_.makeAdaptor(input, attributes);
}

} // namespace vistrane
