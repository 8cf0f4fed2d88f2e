#include "backends/console/ConsoleInterface.h"

#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSImageView.h"

namespace vistrane {
namespace {

class ConsoleInterfaceTest : public ::testing::Test {
protected:
    template <typename Type>
    std::shared_ptr<Type> outlet(const char* name) {
        std::shared_ptr<Type> field;
        interface_.outlet(name, field);
        return field;
    }

    ConsoleInterface interface_;
};

TEST_F(ConsoleInterfaceTest, EveryMemberIsTheOutletOfItsName) {
    EXPECT_EQ(outlet<NSTextField>("hInput"), interface_.hInput);
    EXPECT_EQ(outlet<NSTextField>("mInput"), interface_.mInput);
    EXPECT_EQ(outlet<NSTextField>("sInput"), interface_.sInput);
    EXPECT_EQ(outlet<NSTextField>("timeD"), interface_.timeD);
    EXPECT_EQ(outlet<NSSlider>("fpsS"), interface_.fpsS);
    EXPECT_EQ(outlet<NSButton>("startB"), interface_.startB);
    EXPECT_EQ(outlet<NSButton>("compilingB"), interface_.compilingB);
    EXPECT_EQ(outlet<NSPopUpButton>("AVDevicePopUp"), interface_.AVDevicePopUp);
    EXPECT_EQ(outlet<NSProgressIndicator>("progressBar"), interface_.progressBar);
}

TEST_F(ConsoleInterfaceTest, AnOutletOfAnotherTypeStaysNull) {
    EXPECT_EQ(outlet<NSTextField>("startB"), nullptr);
}

TEST_F(ConsoleInterfaceTest, ControlsSendTheirActions) {
    std::vector<std::string> sent;
    for (const char* selector : {"timeIntervalchanged:", "startRunning:", "genneratingMovie:",
                                 "selectAVDevice:", "rateChanged:"}) {
        interface_.action(selector, [&sent, selector](NSObject*) { sent.push_back(selector); });
    }
    interface_.hInput->userTypes("1");
    interface_.mInput->userTypes("2");
    interface_.sInput->userTypes("3");
    interface_.startB->performClick();
    interface_.compilingB->performClick();
    interface_.AVDevicePopUp->addItemWithTitle("camera");
    interface_.AVDevicePopUp->userPicks(0);
    interface_.fpsS->userMoves(30.0);
    EXPECT_THAT(sent, ::testing::ElementsAre(
                          "timeIntervalchanged:", "timeIntervalchanged:", "timeIntervalchanged:",
                          "startRunning:", "genneratingMovie:", "selectAVDevice:", "rateChanged:"));
}

TEST_F(ConsoleInterfaceTest, ControlsStartAsTheInterfaceFileSays) {
    EXPECT_EQ(interface_.startB->title(), "Start Auto Capture");
    EXPECT_EQ(outlet<NSButton>("oneB")->title(), "Single Frame");
    EXPECT_EQ(interface_.compilingB->title(), "Compile Movie");
    EXPECT_EQ(outlet<NSButton>("outfolderB")->title(), "click to select the output folder");
    EXPECT_EQ(interface_.fpsS->intValue(), 25);
    for (const auto& [given, limited] : {std::pair(0.0, 1), std::pair(61.0, 60)}) {
        interface_.fpsS->userMoves(given);
        EXPECT_EQ(interface_.fpsS->intValue(), limited);
    }
}

} // namespace
} // namespace vistrane
