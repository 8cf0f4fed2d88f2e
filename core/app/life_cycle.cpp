#include "core/app/AppDelegate.h"

#include "platform/appkit/AppKit.h"
#include "platform/appkit/NSColor.h"
#include "platform/avfoundation/AVFoundation.h"
#include "platform/foundation/Foundation.h"

namespace vistrane {

namespace {

constexpr char frameRateArticle[] = "https://en.wikipedia.org/wiki/Frame_rate";

} // namespace

AppDelegate::AppDelegate(const Platform& platform) : platform_(platform) {}

void AppDelegate::awakeFromNib() {
    myDisplay->setWantsLayer(true);
    if (const auto layer = myDisplay->layer()) {
        layer->setBackgroundColor(NSColor::blackColor().CGColor);
    }
    darkModeChanged(nullptr);
    platform_.foundation.defaultCenter().addObserver([this] { darkModeChanged(nullptr); },
                                                     "AppleInterfaceThemeChangedNotification");
    userDefaultsLoad();
    checkUserFolder(this);
}

void AppDelegate::applicationDidFinishLaunching() {
    aSession = platform_.avFoundation.captureSession();
    aSession->setSessionPreset(AVCaptureSessionPresetPhoto);
    stillPhotoOutput = platform_.avFoundation.photoOutput();
    photoOutputSettings = platform_.avFoundation.photoSettings();
    if (aSession->canAddOutput(*stillPhotoOutput)) {
        aSession->addOutput(stillPhotoOutput);
    }

    AVDevicePopUp->removeAllItems();
    allAVdevices = devicesThatCanProduceVideo();

    previewLayer = platform_.avFoundation.layerWithSession(aSession);
    previewLayer->setFrame(previewView ? previewView->bounds() : NSZeroRect);
    if (previewView) {
        previewView->setWantsLayer(true);
        if (const auto layer = previewView->layer()) {
            layer->setBackgroundColor(CGColorGetConstantColor(kCGColorBlack));
            layer->addSublayer(previewLayer);
        }
    }

    startMonitoringFolder(this);
}

void AppDelegate::applicationWillTerminate() {
    if (aSession) {
        aSession->stopRunning();
    }
    userDefaultsSave();
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed() {
    return true;
}

void AppDelegate::realHide(NSObject* sender) {
    platform_.appKit.sharedApplication().miniaturizeAll(sender);
}

void AppDelegate::realUnhide(NSObject* sender) {
    myWindow->makeKeyAndOrderFront(sender);
    platform_.appKit.sharedApplication().activateIgnoringOtherApps(true);
}

void AppDelegate::whatisFPS(NSObject*) {
    platform_.appKit.sharedWorkspace().openURL(NSURL::URLWithString(frameRateArticle));
}

} // namespace vistrane
