#include "core/app/AppDelegate.h"

#include "core/app/standard_alert.h"
#include "platform/appkit/AppKit.h"
#include "platform/avfoundation/AVFoundation.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

bool canProduceVideo(const AVCaptureDevice& device) {
    return device.hasMediaType(AVMediaTypeVideo) || device.hasMediaType(AVMediaTypeMuxed);
}

void reportDeviceError(const Platform& platform, const std::optional<NSError>& error) {
    platform.foundation.NSLog(
        stringWithFormat("deviceInputWithDevice: failed (%@)", {describe(error)}));
    platform.appKit.alertWithError(error.value_or(NSError{}))->runModal();
    runStandardAlert(
        platform.appKit, "Video Device Error",
        "It seems you do NOT have a supported profetional camera or video camera connected.\n"
        "Please plugin a camera or video device(DV) and restart Vistrane. The best way of solving "
        "this issue is: download and install the macOS driver of your camera. test it with "
        "FaceTime, then start Vistrane again.\n"
        "If you just want to make stop motion movie from pictures already in your folder, please "
        "search app named 'frameweave' or 'stillreel'.\n");
}

} // namespace

std::vector<std::shared_ptr<AVCaptureDevice>> AppDelegate::devicesThatCanProduceVideo() {
    // The program also passes a null type, on purpose.
    const std::vector<std::optional<AVCaptureDeviceType>> types = {
        AVCaptureDeviceTypeBuiltInWideAngleCamera, AVCaptureDeviceTypeExternalUnknown,
        std::nullopt};
    allDivicesDiscovery = platform_.avFoundation.discoverySessionWithDeviceTypes(
        types, AVMediaTypeVideo, AVCaptureDevicePositionUnspecified);

    std::vector<std::shared_ptr<AVCaptureDevice>> accepted;
    for (const auto& device : allDivicesDiscovery->devices()) {
        if (canProduceVideo(*device)) {
            AVDevicePopUp->addItemWithTitle(device->localizedName());
            accepted.push_back(device);
        }
    }
    return accepted;
}

void AppDelegate::selectAVDevice(NSObject*) {
    if (aSession) {
        aSession->stopRunning();
        for (const auto& input : aSession->inputs()) {
            aSession->removeInput(*input);
        }
    } else {
        aSession = platform_.avFoundation.captureSession();
    }

    // Read after the old input was removed and before the new one is added, on purpose: there is no
    // video connection at this point.
    con = stillPhotoOutput ? stillPhotoOutput->connectionWithMediaType(AVMediaTypeVideo) : nullptr;

    // Two devices with the same name share an item, so the index may refer to another device. Not
    // corrected, on purpose. The index is -1 if there is no item.
    const NSInteger index = AVDevicePopUp->indexOfSelectedItem();
    const auto count = static_cast<NSInteger>(allAVdevices.size());
    const auto device =
        index >= 0 && index < count ? allAVdevices[static_cast<std::size_t>(index)] : nullptr;

    const AVCaptureDeviceInputResult result = platform_.avFoundation.deviceInputWithDevice(device);
    if (!result.input) {
        reportDeviceError(platform_, result.error);
        return;
    }
    // The photo preset is never restored, on purpose: after a device without it, the session keeps
    // the high preset for the rest of the run.
    if (!device->supportsAVCaptureSessionPreset(AVCaptureSessionPresetPhoto)) {
        aSession->setSessionPreset(AVCaptureSessionPresetHigh);
    }
    aSession->addInput(result.input);
    aSession->startRunning();
}

} // namespace vistrane
