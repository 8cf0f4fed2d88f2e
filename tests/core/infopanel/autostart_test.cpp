#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

class AutostartHint : public PanelTest {
protected:
    SimShownAlert hint() {
        sim.nib().send("tipsForAutostart:");
        return sim.alerts().shown().at(0);
    }
};

TEST_F(AutostartHint, SaysHowToOpenTheProgramAtLogin) {
    wake();
    const SimShownAlert alert = hint();
    EXPECT_EQ(alert.message, "Tips for 'Auto open at login'");
    EXPECT_EQ(alert.informativeText,
              "To save the reserved resource of your macOS under sandbox, we've stopped using "
              "hidden helper agent on loading 'Auto open at login (Auto start)' function from "
              "version 2.1.5. You can simply make any Mac app auto open at login in two ways:\n\n"
              "Method A:\n"
              "please goto your \n"
              "->System Preferences \n"
              "-> Users & Groups \n"
              "-> unlock change from left corner\n"
              "-> select your user name from left column\n"
              "-> select Login Items tab from right colum\n"
              "-> click + button to locate and add 'Vistrane'\n"
              "-> lock change from left corner\n\n"
              "Method B:\n"
              "from dock icon of 'Vistrane'\n"
              "->right click icon then clicking Options\n"
              "->select Open at Login\n"
              "(see attached screenshot for details)");
    EXPECT_THAT(alert.buttons, ElementsAre("Got it"));
    EXPECT_TRUE(alert.transparentTitleBar);
    EXPECT_EQ(alert.accessoryView.get(), &sim.nib().view("tipView"));
    // Nothing follows it.
    EXPECT_THAT(takeProcedure(sim), ElementsAre("alert1 runModal"));
}

TEST_F(AutostartHint, NamesTheRunningVersion) {
    sim.bundle().information = {{"CFBundleShortVersionString", "7"}, {"CFBundleVersion", "1"}};
    wake();
    EXPECT_THAT(hint().informativeText, ::testing::HasSubstr("function from version 7.1. You"));
}

TEST_F(AutostartHint, DoesWithoutItsPicture) {
    wake();
    panel.tipView = nullptr;
    EXPECT_EQ(hint().accessoryView, nullptr);
}

} // namespace
} // namespace vistrane
