#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSNib.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Interface files, the main window's as the controller sees it. A backend has
///
///     NSNib& nib();
///     std::string missingOutlet();       a name that the file has no control for
///     void click(const std::string& outlet, const std::string& selector);
///                                        the user clicks that button, which sends that action
template <typename Backend>
class NibContract : public ::testing::Test {
protected:
    template <typename Control>
    std::shared_ptr<Control> outlet(const std::string& name) {
        std::shared_ptr<Control> field;
        backend_.nib().outlet(name, field);
        return field;
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(NibContract);

TYPED_TEST_P(NibContract, EveryOutletOfTheControllerIsFilled) {
    EXPECT_TRUE(this->template outlet<NSWindow>("myWindow"));
    for (const char* name : {"hInput", "mInput", "sInput", "fpsD", "timeD", "currentS"}) {
        EXPECT_TRUE(this->template outlet<NSTextField>(name)) << name;
    }
    for (const char* name : {"fpsS", "photoSlider"}) {
        EXPECT_TRUE(this->template outlet<NSSlider>(name)) << name;
    }
    for (const char* name :
         {"startB", "oneB", "slowB", "compilingB", "outfolderB", "previewPlayButton"}) {
        EXPECT_TRUE(this->template outlet<NSButton>(name)) << name;
    }
    EXPECT_TRUE(this->template outlet<NSImageView>("myDisplay"));
    EXPECT_TRUE(this->template outlet<NSPopUpButton>("AVDevicePopUp"));
    EXPECT_TRUE(this->template outlet<NSView>("previewView"));
    EXPECT_TRUE(this->template outlet<NSProgressIndicator>("progressBar"));
}

TYPED_TEST_P(NibContract, AnOutletThatTheFileDoesNotHaveStaysNull) {
    const std::string missing = this->backend_.missingOutlet();
    EXPECT_EQ(this->template outlet<NSButton>(missing), nullptr);
    EXPECT_EQ(this->template outlet<NSView>(missing), nullptr);
}

TYPED_TEST_P(NibContract, AnOutletIsTheSameControlEachTime) {
    const auto button = this->template outlet<NSButton>("startB");
    EXPECT_EQ(this->template outlet<NSButton>("startB"), button);
    EXPECT_NE(this->template outlet<NSButton>("oneB"), button);
}

TYPED_TEST_P(NibContract, AnActionIsSentByItsControl) {
    std::vector<std::string> sent;
    for (const char* selector :
         {"startRunning:", "addFrameClick:", "genneratingMovie:", "noControlSendsThis:"}) {
        this->backend_.nib().action(selector,
                                    [&sent, selector](NSObject*) { sent.push_back(selector); });
    }
    EXPECT_THAT(sent, ::testing::IsEmpty());
    this->backend_.click("oneB", "addFrameClick:");
    this->backend_.click("startB", "startRunning:");
    this->backend_.click("compilingB", "genneratingMovie:");
    this->backend_.click("oneB", "addFrameClick:");
    EXPECT_THAT(sent, ::testing::ElementsAre("addFrameClick:", "startRunning:", "genneratingMovie:",
                                             "addFrameClick:"));
}

REGISTER_TYPED_TEST_SUITE_P(NibContract, EveryOutletOfTheControllerIsFilled,
                            AnOutletThatTheFileDoesNotHaveStaysNull,
                            AnOutletIsTheSameControlEachTime, AnActionIsSentByItsControl);

} // namespace vistrane
