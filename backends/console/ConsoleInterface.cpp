#include "backends/console/ConsoleInterface.h"

namespace vistrane {

namespace {

std::shared_ptr<ConsoleTextField> textField() {
    return std::make_shared<ConsoleTextField>();
}

std::shared_ptr<ConsoleButton> button(const char* title,
                                      ConsoleButton::Kind kind = ConsoleButton::Kind::push) {
    return std::make_shared<ConsoleButton>(title, kind);
}

} // namespace

ConsoleInterface::ConsoleInterface()
    : myWindow(std::make_shared<ConsoleWindow>()), hInput(textField()), mInput(textField()),
      sInput(textField()), fpsD(textField()), timeD(textField()), currentS(textField()),
      fpsS(std::make_shared<ConsoleSlider>(1.0, 60.0, 25.0)),
      photoSlider(std::make_shared<ConsoleSlider>(0.0, 0.0, 0.0)),
      startB(button("Start Auto Capture")), oneB(button("Single Frame")),
      slowB(button("Lower Quality", ConsoleButton::Kind::checkBox)),
      compilingB(button("Compile Movie")), outfolderB(button("click to select the output folder")),
      previewPlayButton(button("")), leadingImage(std::make_shared<ConsoleImageView>()),
      myDisplay(std::make_shared<ConsoleImageView>()),
      AVDevicePopUp(std::make_shared<ConsolePopUpButton>()),
      previewView(std::make_shared<ConsoleView>()),
      progressBar(std::make_shared<ConsoleProgressIndicator>()) {}

void ConsoleInterface::addTo(ConsoleNib& nib) const {
    nib.addOutlet("myWindow", myWindow);
    nib.addOutlet("hInput", hInput);
    nib.addOutlet("mInput", mInput);
    nib.addOutlet("sInput", sInput);
    nib.addOutlet("fpsD", fpsD);
    nib.addOutlet("timeD", timeD);
    nib.addOutlet("fpsS", fpsS);
    nib.addOutlet("startB", startB);
    nib.addOutlet("oneB", oneB);
    nib.addOutlet("slowB", slowB);
    nib.addOutlet("compilingB", compilingB);
    nib.addOutlet("outfolderB", outfolderB);
    nib.addOutlet("leadingImage", leadingImage);
    nib.addOutlet("AVDevicePopUp", AVDevicePopUp);
    nib.addOutlet("previewView", previewView);
    nib.addOutlet("photoSlider", photoSlider);
    nib.addOutlet("myDisplay", myDisplay);
    nib.addOutlet("currentS", currentS);
    nib.addOutlet("progressBar", progressBar);
    nib.addOutlet("previewPlayButton", previewPlayButton);

    for (const auto& field : {hInput, mInput, sInput}) {
        nib.addSender("timeIntervalchanged:", field);
    }
    nib.addSender("startRunning:", startB);
    nib.addSender("addFrameClick:", oneB);
    nib.addSender("genneratingMovie:", compilingB);
    nib.addSender("outputFolder:", outfolderB);
    nib.addSender("selectAVDevice:", AVDevicePopUp);
    nib.addSender("rateChanged:", fpsS);
    nib.addSender("sliderDisplaying:", photoSlider);
    nib.addSender("playPictures:", previewPlayButton);
}

} // namespace vistrane
