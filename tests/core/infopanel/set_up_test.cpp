#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class PanelSetUp : public PanelTest {
protected:
    /// The calls of the set-up without the building of the menus, which has tests of its own.
    std::vector<std::string> wakeWithoutMenus() {
        panel.awakeFromNib();
        std::vector<std::string> calls;
        for (std::string& call : sim.takeCalls()) {
            if (call.compare(0, 4, "menu") != 0) {
                calls.push_back(std::move(call));
            }
        }
        return calls;
    }
};

TEST_F(PanelSetUp, EveryOutletIsAskedForByItsName) {
    EXPECT_THAT(sim.nib().outlets(),
                UnorderedElementsAre("mantisSubmenuS", "mantisSubmenuD", "mantisSubmenuM",
                                     "tipView", "dockButton", "sMenu", "versionLabel", "myWindow",
                                     "tipButton", "tipWindow", "tipImage", "tipText", "picCount"));
}

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

TEST_F(PanelSetUp, ThePanelIsTheWindowThatTheInterfaceDescribesForIt) {
    panel.setTitle("Info");
    panel.makeKeyAndOrderFront(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("panel setTitle: Info", "panel makeKeyAndOrderFront"));
}

TEST(PanelConnections, MissingOutletsAreNamedUnlessThePanelCanDoWithoutThem) {
    Sim sim;
    mantisQRXpanel panel(sim.platform());
    for (const char* name : {"tipView", "sMenu", "dockButton"}) {
        sim.nib().leaveOut(name);
    }
    EXPECT_THAT(panel.connectInterface(sim.nib()), ElementsAre("dockButton", "sMenu"));
}

TEST(PanelConnections, NothingIsMissingInAWholeInterface) {
    Sim sim;
    mantisQRXpanel panel(sim.platform());
    EXPECT_THAT(panel.connectInterface(sim.nib()), IsEmpty());
}

TEST_F(PanelSetUp, TheFirstStartTakesItsStepsInOrder) {
    const std::vector<std::string> calls = wakeWithoutMenus();
    EXPECT_THAT(calls,
                ElementsAre("versionLabel setStringValue: Vistrane v2.1.5",
                            "myWindow setTitle: Vistrane v2.1.5",
                            "standardUserDefaults integerForKey: firstTime",
                            "standardUserDefaults setInteger: 1 forKey: firstTime",
                            "standardUserDefaults setInteger: 1 forKey: iDock",
                            "standardUserDefaults synchronize", "mantisSubmenuS setSubmenu: menu1",
                            "mantisSubmenuD setSubmenu: menu2", "mantisSubmenuM setSubmenu: menu3",
                            "standardUserDefaults integerForKey: iTip", "tipButton setState: 0",
                            "picCount setStringValue: 1 of 4", "tipImage setImage: tip1.png",
                            "tipText setStringValue: " + pageText(), "tipText setNeedsDisplay: YES",
                            "tipImage setNeedsDisplay: YES", "tipWindow makeKeyAndOrderFront"));
    EXPECT_EQ(savedInteger("firstTime"), 1);
    EXPECT_EQ(savedInteger("iDock"), 1);
    EXPECT_EQ(panel.defaults, &sim.platform().foundation.standardUserDefaults());
}

TEST_F(PanelSetUp, ALaterStartLeavesTheFirstRunSettings) {
    sim.defaults().values["firstTime"] = NSInteger{1};
    sim.defaults().values["iDock"] = NSInteger{0};
    sim.defaults().values["iTip"] = NSInteger{1};
    EXPECT_THAT(wakeWithoutMenus(),
                ElementsAre("versionLabel setStringValue: Vistrane v2.1.5",
                            "myWindow setTitle: Vistrane v2.1.5",
                            "standardUserDefaults integerForKey: firstTime",
                            "mantisSubmenuS setSubmenu: menu1", "mantisSubmenuD setSubmenu: menu2",
                            "mantisSubmenuM setSubmenu: menu3",
                            "standardUserDefaults integerForKey: iTip"));
    EXPECT_EQ(sim.defaults().integerForKey("iDock"), 0);
}

TEST_F(PanelSetUp, AnyOtherMarkerThanOneIsAFirstRun) {
    sim.defaults().values["firstTime"] = NSInteger{2};
    wake();
    EXPECT_EQ(savedInteger("firstTime"), 1);
    EXPECT_EQ(savedInteger("iDock"), 1);
}

TEST_F(PanelSetUp, TheControllersFirstRunMarkerIsAnother) {
    sim.defaults().values["firstTimeRunning"] = NSInteger{1};
    wake();
    EXPECT_EQ(savedInteger("firstTime"), 1);
}

TEST_F(PanelSetUp, TheVersionIsMadeOfTheBundlesTwoTexts) {
    sim.bundle().information = {{"CFBundleShortVersionString", "10.0.3"},
                                {"CFBundleVersion", "beta"}};
    wake();
    EXPECT_EQ(panel.appVersion, "10.0.3.beta");
    EXPECT_EQ(sim.nib().textField("versionLabel").text, "Vistrane v10.0.3.beta");
    EXPECT_EQ(sim.nib().window("myWindow").title, "Vistrane v10.0.3.beta");
}

TEST_F(PanelSetUp, ABundleWithoutAVersionDoesNoHarm) {
    sim.bundle().information.clear();
    wake();
    EXPECT_EQ(panel.appVersion, ".");
}

TEST_F(PanelSetUp, TheMenusHoldAllPromotions) {
    wake();
    std::vector<std::string> titles;
    for (const auto& item : sim.nib().menuItem("mantisSubmenuS").submenu->items) {
        titles.push_back(item->title);
    }
    EXPECT_THAT(titles, ElementsAreArray(promotionTitles()));
}

TEST_F(PanelSetUp, NeitherTheDockIconNorTheFrontIsTouched) {
    panel.awakeFromNib();
    EXPECT_THAT(sim.takeCalls(), Not(Contains(::testing::StartsWith("sharedApplication"))));
}

} // namespace
} // namespace vistrane
