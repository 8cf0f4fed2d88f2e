#include <limits>

#include <gtest/gtest.h>

#include "backends/console/ConsoleInterface.h"
#include "backends/console/ConsoleWorkspace.h"

namespace vistrane {
namespace {

TEST(ConsoleButton, AClickSendsTheActionWithTheButton) {
    ConsoleButton button("title");
    button.performClick();
    NSObject* sender = nullptr;
    button.setAction([&](NSObject* from) { sender = from; });
    button.performClick();
    EXPECT_EQ(sender, &button);
    EXPECT_EQ(button.state(), 0);
}

TEST(ConsoleButton, ADisabledButtonSendsNothing) {
    ConsoleButton button("title");
    int clicks = 0;
    button.setAction([&](NSObject*) { ++clicks; });
    button.setEnabled(false);
    EXPECT_FALSE(button.isEnabled());
    button.performClick();
    EXPECT_EQ(clicks, 0);
    button.setEnabled(true);
    button.performClick();
    EXPECT_EQ(clicks, 1);
}

TEST(ConsoleTextField, TypingSendsTheActionOnce) {
    ConsoleTextField field;
    int sent = 0;
    std::string seen;
    field.setAction([&](NSObject* sender) {
        EXPECT_EQ(sender, &field);
        seen = field.stringValue();
        ++sent;
    });
    field.userTypes("7x");
    EXPECT_EQ(sent, 1);
    EXPECT_EQ(seen, "7x");
}

TEST(ConsoleSlider, AMoveIsLimitedAndSendsTheAction) {
    ConsoleSlider slider(1.0, 60.0, 25.0);
    float seen = 0.0F;
    slider.setAction([&](NSObject*) { seen = slider.floatValue(); });
    slider.userMoves(12.5);
    EXPECT_EQ(seen, 12.5F);
    EXPECT_EQ(slider.intValue(), 13);
    slider.userMoves(1000.0);
    EXPECT_EQ(seen, 60.0F);
    slider.userMoves(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(seen, 60.0F);
}

TEST(ConsolePopUpButton, PickingTheSelectedItemSendsTheActionToo) {
    ConsolePopUpButton popUp;
    popUp.addItemWithTitle("A");
    int sent = 0;
    popUp.setAction([&](NSObject*) { ++sent; });
    EXPECT_TRUE(popUp.userPicks(0));
    EXPECT_TRUE(popUp.userPicks(0));
    EXPECT_EQ(sent, 2);
}

TEST(ConsolePopUpButton, AnItemThatDoesNotExistCannotBePicked) {
    ConsolePopUpButton popUp;
    popUp.addItemWithTitle("A");
    int sent = 0;
    popUp.setAction([&](NSObject*) { ++sent; });
    EXPECT_FALSE(popUp.userPicks(1));
    EXPECT_FALSE(popUp.userPicks(-1));
    EXPECT_EQ(sent, 0);
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
}

TEST(ConsoleProgressIndicator, ReportsToItsObserver) {
    ConsoleProgressIndicator indicator;
    double value = -1.0;
    double maximum = -1.0;
    indicator.setObserver([&](double newValue, double newMaximum) {
        value = newValue;
        maximum = newMaximum;
    });
    indicator.setMaxValue(6.0);
    indicator.setDoubleValue(2.0);
    EXPECT_EQ(value, 2.0);
    EXPECT_EQ(maximum, 6.0);
}

TEST(ConsoleWorkspace, PassesAddressesOn) {
    std::string opened;
    ConsoleWorkspace workspace([&](const NSURL& url) {
        opened = url.absoluteString();
        return false;
    });
    EXPECT_FALSE(workspace.openURL(NSURL::fileURLWithPath("/a.mov")));
    EXPECT_EQ(opened, "file:///a.mov");
}

} // namespace
} // namespace vistrane
