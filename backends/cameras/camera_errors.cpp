#include "backends/cameras/camera_errors.h"

#include <cstdint>

namespace vistrane {

namespace {

// The kit's own codes.
constexpr std::int64_t AVErrorUnknown = -11800;
constexpr std::int64_t AVErrorSessionNotRunning = -11803;
constexpr std::int64_t AVErrorDeviceWasDisconnected = -11808;
constexpr std::int64_t AVErrorDecodeFailed = -11821;
constexpr std::int64_t AVErrorDeviceNotConnected = -11814;
constexpr std::int64_t AVErrorDeviceInUseByAnotherApplication = -11815;
constexpr std::int64_t AVErrorNoDataCaptured = -11805;

NSError captureError(std::int64_t code, std::string text) {
    return NSError{"AVFoundationErrorDomain", code, std::move(text)};
}

} // namespace

std::string cannotListCameras() {
    std::string text = "The cameras cannot be listed (";
    text += tooFewDescriptors;
    text += "): raise the limit, which 'ulimit -n' tells, and start Vistrane again";
    return text;
}

std::string mediaFrameworkHangs(std::chrono::milliseconds waited) {
    return "The cameras cannot be listed: GStreamer did not load its plugins within " +
           std::to_string(waited.count()) +
           " ms. If its program gst-plugin-scanner still runs, end it, and start Vistrane again";
}

NSError noSuchDevice() {
    return captureError(AVErrorUnknown, "There is no such device: pick one of the list");
}

NSError deviceNotConnected(const std::string& camera) {
    return captureError(AVErrorDeviceNotConnected,
                        "The camera '" + camera +
                            "' is not there any more: check that it is connected and switched on");
}

NSError deviceCannotBeOpened(const std::string& camera, const std::string& reason) {
    return captureError(AVErrorDeviceInUseByAnotherApplication,
                        "The camera '" + camera + "' cannot be opened (" + reason +
                            "): close other programs that use it, and check that you may use it");
}

NSError noFirstPicture(const std::string& camera, std::chrono::milliseconds waited) {
    return deviceCannotBeOpened(camera, "it gives no picture within " +
                                            std::to_string(waited.count()) + " ms");
}

NSError sessionNotRunning() {
    return captureError(AVErrorSessionNotRunning, "The camera is not running: pick a device first");
}

NSError sessionWasStopped() {
    return captureError(AVErrorSessionNotRunning,
                        "The camera was stopped before the picture was taken");
}

NSError noPictureInTime(const std::string& camera, std::chrono::milliseconds waited) {
    return captureError(AVErrorNoDataCaptured,
                        "The camera '" + camera + "' gave no picture within " +
                            std::to_string(waited.count()) +
                            " ms: check that it is connected and not in use elsewhere");
}

NSError pictureNotReadable(const std::string& camera) {
    return captureError(AVErrorDecodeFailed,
                        "The camera '" + camera +
                            "' gave a picture that cannot be read: try again, or free some memory");
}

NSError cameraGivesNoPictures(const std::string& camera, const std::string& reason) {
    return captureError(AVErrorDeviceWasDisconnected,
                        "The camera '" + camera + "' gives no pictures" +
                            (reason.empty() ? "" : " (" + reason + ")") +
                            ": check that it is connected. Capturing continues when it is back.");
}

} // namespace vistrane
