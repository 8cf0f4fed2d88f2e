#include "core/app/AppDelegate.h"

#include "core/app/Outlets.h"
#include "core/preview/hidenSlidercell.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

std::vector<std::string> AppDelegate::connectInterface(NSNib& nib) {
    Outlets outlets(nib);
    outlets.require("myWindow", myWindow);
    outlets.require("hInput", hInput);
    outlets.require("mInput", mInput);
    outlets.require("sInput", sInput);
    outlets.require("fpsD", fpsD);
    outlets.require("timeD", timeD);
    outlets.require("fpsS", fpsS);
    outlets.require("startB", startB);
    outlets.require("oneB", oneB);
    outlets.require("slowB", slowB);
    outlets.require("compilingB", compilingB);
    outlets.require("outfolderB", outfolderB);
    outlets.take("leadingImage", leadingImage);
    outlets.require("AVDevicePopUp", AVDevicePopUp);
    outlets.take("previewView", previewView);
    outlets.require("photoSlider", photoSlider);
    outlets.require("myDisplay", myDisplay);
    outlets.require("currentS", currentS);
    outlets.require("progressBar", progressBar);
    outlets.require("previewPlayButton", previewPlayButton);

    nib.action("realHide:", [this](NSObject* sender) { realHide(sender); });
    nib.action("realUnhide:", [this](NSObject* sender) { realUnhide(sender); });
    nib.action("whatisFPS:", [this](NSObject* sender) { whatisFPS(sender); });
    nib.action("rateChanged:", [this](NSObject* sender) { rateChanged(sender); });
    nib.action("outputFolder:", [this](NSObject* sender) { outputFolder(sender); });
    nib.action("selectAVDevice:", [this](NSObject* sender) { selectAVDevice(sender); });
    nib.action("timeIntervalchanged:", [this](NSObject* sender) { timeIntervalchanged(sender); });
    nib.action("startRunning:", [this](NSObject* sender) { startRunning(sender); });
    nib.action("addFrameClick:", [this](NSObject* sender) { addFrameClick(sender); });
    nib.action("sliderDisplaying:", [this](NSObject* sender) { sliderDisplaying(sender); });
    nib.action("playPictures:", [this](NSObject* sender) { playPictures(sender); });
    nib.action("genneratingMovie:", [this](NSObject* sender) { genneratingMovie(sender); });

    nib.sliderCell("hidenSlidercell",
                   [this] { return std::make_shared<hidenSlidercell>(platform_.appKit); });
    return outlets.missing();
}

} // namespace vistrane
