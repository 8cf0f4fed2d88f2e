#include "core/app/AppDelegate.h"

#include "core/app/standard_alert.h"
#include "core/folder/project_folder.h"
#include "platform/appkit/AppKit.h"
#include "platform/avfoundation/AVFoundation.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Encodes the picture as a PNG file at its pixel size. Null if that fails.
std::shared_ptr<NSData> pngData(AppKit& appKit, const std::shared_ptr<NSImage>& image) {
    const auto tiff = image ? image->TIFFRepresentation() : nullptr;
    const auto bitmap = appKit.imageRepWithData(tiff);
    if (!bitmap) {
        return nullptr;
    }
    return bitmap->representationUsingType(NSBitmapImageFileTypePNG,
                                           {.NSImageCompressionFactor = 1.0F});
}

} // namespace

void AppDelegate::addFrameClick(NSObject*) {
    oneB->setState(NSControlStateValueOn);
    if (!aSession || !aSession->isRunning()) {
        return;
    }
    addPhotoFrame();
}

void AppDelegate::addPhotoFrame() {
    if (!stillPhotoOutput || !photoOutputSettings) {
        return;
    }
    stillPhotoOutput->capturePhotoWithSettings(
        platform_.avFoundation.photoSettingsFromPhotoSettings(*photoOutputSettings), *this);
}

void AppDelegate::captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput&,
                                                        const AVCapturePhoto* photo,
                                                        const std::optional<NSError>& error) {
    if (error) {
        platform_.foundation.NSLog(
            stringWithFormat("photoOutput error: %@", {error->localizedDescription}));
        return;
    }
    const auto image =
        platform_.appKit.imageWithData(photo ? photo->fileDataRepresentation() : nullptr);
    myDisplay->setImage(image);
    saveTheimage(image);
}

void AppDelegate::saveTheimage(const std::shared_ptr<NSImage>& image) {
    const std::optional<std::string> folder = chosenFolder(*outfolderB);
    if (!folder) {
        runStandardAlert(platform_.appKit, "Please select the output folder",
                         "Nice shot, but unfortunately this frame of the picture has NOT been "
                         "saved. Please select the output folder first.\n");
        return;
    }
    const NSDate now = platform_.foundation.date();
    const auto formatter = platform_.foundation.dateFormatter();
    // "YY" is the week-based year, on purpose.
    formatter->setDateFormat("YY-MM-dd-HH-mm-ss");
    const std::string path =
        stringWithFormat("%@%@%@%@", {*folder, "/", formatter->stringFromDate(now), ".png"});
    if (const auto png = pngData(platform_.appKit, image)) {
        png->writeToFile(path, false);
    }
}

} // namespace vistrane
