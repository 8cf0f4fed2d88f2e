#include "backends/console/ConsoleNib.h"

#include <vector>

#include <gmock/gmock.h>

#include "backends/console/ConsoleInterface.h"

namespace vistrane {
namespace {

class ConsoleNibTest : public ::testing::Test {
protected:
    ConsoleNibTest() { interface_.addTo(nib_); }

    template <typename Type, typename Control>
    void expectOutlet(const char* name, const std::shared_ptr<Control>& control) {
        std::shared_ptr<Type> field;
        nib_.outlet(name, field);
        EXPECT_EQ(field, control) << name;
    }

    ConsoleInterface interface_;
    ConsoleNib nib_;
};

TEST_F(ConsoleNibTest, EveryOutletIsItsControl) {
    expectOutlet<NSWindow>("myWindow", interface_.myWindow);
    expectOutlet<NSTextField>("hInput", interface_.hInput);
    expectOutlet<NSTextField>("mInput", interface_.mInput);
    expectOutlet<NSTextField>("sInput", interface_.sInput);
    expectOutlet<NSTextField>("fpsD", interface_.fpsD);
    expectOutlet<NSTextField>("timeD", interface_.timeD);
    expectOutlet<NSSlider>("fpsS", interface_.fpsS);
    expectOutlet<NSButton>("startB", interface_.startB);
    expectOutlet<NSButton>("oneB", interface_.oneB);
    expectOutlet<NSButton>("slowB", interface_.slowB);
    expectOutlet<NSButton>("compilingB", interface_.compilingB);
    expectOutlet<NSButton>("outfolderB", interface_.outfolderB);
    expectOutlet<NSImageView>("leadingImage", interface_.leadingImage);
    expectOutlet<NSPopUpButton>("AVDevicePopUp", interface_.AVDevicePopUp);
    expectOutlet<NSView>("previewView", interface_.previewView);
    expectOutlet<NSSlider>("photoSlider", interface_.photoSlider);
    expectOutlet<NSImageView>("myDisplay", interface_.myDisplay);
    expectOutlet<NSTextField>("currentS", interface_.currentS);
    expectOutlet<NSProgressIndicator>("progressBar", interface_.progressBar);
    expectOutlet<NSButton>("previewPlayButton", interface_.previewPlayButton);
}

TEST_F(ConsoleNibTest, AnOutletOfAnotherTypeStaysNull) {
    expectOutlet<NSTextField>("startB", std::shared_ptr<NSTextField>());
}

TEST_F(ConsoleNibTest, ControlsSendTheirActions) {
    std::vector<std::string> sent;
    for (const char* selector : {"timeIntervalchanged:", "startRunning:", "addFrameClick:",
                                 "genneratingMovie:", "outputFolder:", "selectAVDevice:",
                                 "rateChanged:", "sliderDisplaying:", "playPictures:"}) {
        nib_.action(selector, [&sent, selector](NSObject*) { sent.push_back(selector); });
    }
    interface_.hInput->userTypes("1");
    interface_.mInput->userTypes("2");
    interface_.sInput->userTypes("3");
    interface_.startB->performClick();
    interface_.oneB->performClick();
    interface_.compilingB->performClick();
    interface_.outfolderB->performClick();
    interface_.AVDevicePopUp->addItemWithTitle("camera");
    interface_.AVDevicePopUp->userPicks(0);
    interface_.fpsS->userMoves(30.0);
    interface_.photoSlider->userMoves(0.0);
    interface_.previewPlayButton->performClick();
    interface_.slowB->performClick();
    EXPECT_THAT(sent, ::testing::ElementsAre(
                          "timeIntervalchanged:", "timeIntervalchanged:", "timeIntervalchanged:",
                          "startRunning:", "addFrameClick:", "genneratingMovie:", "outputFolder:",
                          "selectAVDevice:", "rateChanged:", "sliderDisplaying:", "playPictures:"));
}

TEST_F(ConsoleNibTest, ControlsStartAsTheInterfaceFileSays) {
    EXPECT_EQ(interface_.startB->title(), "Start Auto Capture");
    EXPECT_EQ(interface_.oneB->title(), "Single Frame");
    EXPECT_EQ(interface_.compilingB->title(), "Compile Movie");
    EXPECT_EQ(interface_.outfolderB->title(), "click to select the output folder");
    EXPECT_EQ(interface_.fpsS->minValue(), 1.0);
    EXPECT_EQ(interface_.fpsS->maxValue(), 60.0);
    EXPECT_EQ(interface_.fpsS->intValue(), 25);
    EXPECT_EQ(interface_.photoSlider->maxValue(), 0.0);
}

} // namespace
} // namespace vistrane
