#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class PanelSetUp : public PanelTest {};

TEST_F(PanelSetUp, EachOutletGetsTheControlOfItsName) {
    EXPECT_EQ(panel.mantisSubmenuS.get(), &sim.nib().menuItem("mantisSubmenuS"));
    EXPECT_EQ(panel.mantisSubmenuD.get(), &sim.nib().menuItem("mantisSubmenuD"));
    EXPECT_EQ(panel.mantisSubmenuM.get(), &sim.nib().menuItem("mantisSubmenuM"));
    EXPECT_EQ(panel.tipView.get(), &sim.nib().view("tipView"));
    EXPECT_EQ(panel.dockButton.get(), &sim.nib().button("dockButton"));
    EXPECT_EQ(panel.sMenu.get(), &sim.nib().menu("sMenu"));
    EXPECT_EQ(panel.versionLabel.get(), &sim.nib().textField("versionLabel"));
    EXPECT_EQ(panel.myWindow.get(), &sim.nib().window("myWindow"));
    EXPECT_EQ(panel.tipButton.get(), &sim.nib().button("tipButton"));
    EXPECT_EQ(panel.tipWindow.get(), &sim.nib().window("tipWindow"));
    EXPECT_EQ(panel.tipImage.get(), &sim.nib().imageView("tipImage"));
    EXPECT_EQ(panel.tipText.get(), &sim.nib().textField("tipText"));
    EXPECT_EQ(panel.picCount.get(), &sim.nib().textField("picCount"));
}

TEST_F(PanelSetUp, EveryActionIsOfferedUnderItsSelector) {
    EXPECT_THAT(
        sim.nib().actions(),
        UnorderedElementsAre("showEasyStartTip:", "tipNext:", "tipPreverious:", "changePictures:",
                             "tipButtonChanged:", "windowWillClose:", "excuteMyPromo:",
                             "dockIconSwitching:", "tipsForAutostart:", "rateMe:", "sendEmailtoMe:",
                             "featureRequest:", "moreBYmantisqrx:"));
}

TEST(PanelConnections, MissingOutletsAreNamedUnlessThePanelCanDoWithoutThem) {
    Sim sim;
    mantisQRXpanel panel(sim.platform());
    for (const char* name : {"tipView", "sMenu", "dockButton"}) {
        sim.nib().leaveOut(name);
    }
    EXPECT_THAT(panel.connectInterface(sim.nib()), ElementsAre("dockButton", "sMenu"));
    Sim whole;
    EXPECT_THAT(mantisQRXpanel(whole.platform()).connectInterface(whole.nib()), IsEmpty());
}

TEST_F(PanelSetUp, TheFirstStartTakesItsStepsInOrder) {
    panel.awakeFromNib();
    // The building of the menus and the opening of the tips have tests of their own.
    EXPECT_THAT(takeProcedure(sim, {"menu", "tip", "picCount"}),
                ElementsAre("versionLabel setStringValue: Vistrane v2.1.5",
                            "myWindow setTitle: Vistrane v2.1.5",
                            "standardUserDefaults integerForKey: firstTime",
                            "standardUserDefaults setInteger: 1 forKey: firstTime",
                            "standardUserDefaults setInteger: 1 forKey: iDock",
                            "standardUserDefaults synchronize", "mantisSubmenuS setSubmenu: menu1",
                            "mantisSubmenuD setSubmenu: menu2", "mantisSubmenuM setSubmenu: menu3",
                            "standardUserDefaults integerForKey: iTip"));
    EXPECT_EQ(panel.defaults, &sim.platform().foundation.standardUserDefaults());
}

TEST_F(PanelSetUp, OnlyTheMarkerOneLeavesTheSettings) {
    for (const NSInteger marker : {0, 1, 2}) {
        sim.defaults().values = {{"firstTime", marker}, {"iDock", NSInteger{0}}};
        // The controller's marker is another.
        sim.defaults().values["firstTimeRunning"] = NSInteger{1};
        sim.defaults().durableValues.clear();
        panel.awakeFromNib();
        EXPECT_EQ(savedInteger("firstTime"), marker == 1 ? -1 : 1);
        EXPECT_EQ(savedInteger("iDock"), marker == 1 ? -1 : 1);
        EXPECT_EQ(sim.defaults().integerForKey("iDock"), marker == 1 ? 0 : 1);
    }
}

TEST_F(PanelSetUp, TheVersionIsMadeOfTheBundlesTwoTexts) {
    sim.bundle().information = {{"CFBundleShortVersionString", "10.0.3"},
                                {"CFBundleVersion", "beta"}};
    wake();
    EXPECT_EQ(panel.appVersion, "10.0.3.beta");
    EXPECT_EQ(sim.nib().textField("versionLabel").text, "Vistrane v10.0.3.beta");
    EXPECT_EQ(sim.nib().window("myWindow").title, "Vistrane v10.0.3.beta");
    sim.bundle().information.clear();
    wake();
    EXPECT_EQ(panel.appVersion, ".");
}

} // namespace
} // namespace vistrane
