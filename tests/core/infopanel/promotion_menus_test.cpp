#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PromotionMenus : public PanelTest {
protected:
    SimMenu& submenu(const std::string& item) { return *sim.nib().menuItem(item).submenu; }
};

TEST_F(PromotionMenus, AreBuiltInOrder) {
    panel.addingPromoAppsOfmantisQRX({"frameweave", "Flipstep"});
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre(
            "menu -> menu1", "menu -> menu2", "menu -> menu3",
            // S, then M with the picture, then D without.
            "menu1 addItemWithTitle: frameweave keyEquivalent: \"\"",
            "menu1.frameweave setRepresentedObject: frameweave",
            "menu1.frameweave setTarget: (other object)", "menu1.frameweave setImage: frameweave",
            "menu3 addItemWithTitle: frameweave keyEquivalent: \"\"",
            "menu3.frameweave setRepresentedObject: frameweave",
            "menu3.frameweave setTarget: (other object)", "menu3.frameweave setImage: frameweave",
            "menu2 addItemWithTitle: frameweave keyEquivalent: \"\"",
            "menu2.frameweave setRepresentedObject: frameweave",
            "menu2.frameweave setTarget: (other object)",
            "menu1 addItemWithTitle: Flipstep keyEquivalent: \"\"",
            "menu1.Flipstep setRepresentedObject: Flipstep",
            "menu1.Flipstep setTarget: (other object)", "menu1.Flipstep setImage: Flipstep",
            "menu3 addItemWithTitle: Flipstep keyEquivalent: \"\"",
            "menu3.Flipstep setRepresentedObject: Flipstep",
            "menu3.Flipstep setTarget: (other object)", "menu3.Flipstep setImage: Flipstep",
            "menu2 addItemWithTitle: Flipstep keyEquivalent: \"\"",
            "menu2.Flipstep setRepresentedObject: Flipstep",
            "menu2.Flipstep setTarget: (other object)", "mantisSubmenuS setSubmenu: menu1",
            "mantisSubmenuD setSubmenu: menu2", "mantisSubmenuM setSubmenu: menu3"));
}

TEST_F(PromotionMenus, ThePanelIsTheTargetOfEveryItem) {
    wake();
    for (const char* name : {"mantisSubmenuS", "mantisSubmenuD", "mantisSubmenuM"}) {
        for (const auto& item : submenu(name).items) {
            EXPECT_EQ(item->target, &panel);
            EXPECT_EQ(item->object, item->title);
            EXPECT_EQ(item->keyEquivalent, "");
            EXPECT_EQ(item->submenu, nullptr);
        }
    }
}

TEST_F(PromotionMenus, OnlyTheMenuDHasNoPictures) {
    wake();
    for (std::size_t i = 0; i < promotionTitles().size(); ++i) {
        const std::string& title = promotionTitles()[i];
        EXPECT_EQ(nameOf(submenu("mantisSubmenuS").items.at(i)->image.get()), title);
        EXPECT_EQ(nameOf(submenu("mantisSubmenuM").items.at(i)->image.get()), title);
        EXPECT_EQ(submenu("mantisSubmenuD").items.at(i)->image, nullptr);
    }
}

TEST_F(PromotionMenus, NoTitlesLeaveThreeEmptySubmenus) {
    panel.addingPromoAppsOfmantisQRX({});
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("menu -> menu1", "menu -> menu2", "menu -> menu3",
                            "mantisSubmenuS setSubmenu: menu1", "mantisSubmenuD setSubmenu: menu2",
                            "mantisSubmenuM setSubmenu: menu3"));
    EXPECT_THAT(submenu("mantisSubmenuD").items, IsEmpty());
}

TEST_F(PromotionMenus, AMissingPictureLeavesAnItemWithoutOne) {
    sim.pictures().resources.erase("Flipstep");
    panel.addingPromoAppsOfmantisQRX({"Flipstep"});
    EXPECT_EQ(submenu("mantisSubmenuS").items.at(0)->image, nullptr);
    EXPECT_EQ(submenu("mantisSubmenuM").items.at(0)->title, "Flipstep");
}

TEST_F(PromotionMenus, AnItemOpensItsStorePageFromEveryMenu) {
    wake();
    for (const char* name : {"mantisSubmenuS", "mantisSubmenuD", "mantisSubmenuM"}) {
        for (std::size_t i = 0; i < promotions().size(); ++i) {
            submenu(name).items.at(i)->choose();
            EXPECT_THAT(sim.takeCalls(),
                        ElementsAre("sharedWorkspace openURL: " + promotions()[i].storeAddress));
        }
    }
}

TEST_F(PromotionMenus, ATitleOutsideTheListOpensTheDevelopersApplications) {
    panel.addingPromoAppsOfmantisQRX({"flipstep", "Flipstep ", ""});
    sim.takeCalls();
    for (const auto& item : submenu("mantisSubmenuS").items) {
        item->choose();
        EXPECT_THAT(sim.takeCalls(),
                    ElementsAre(std::string("sharedWorkspace openURL: ") + developerSearchLink));
    }
}

TEST_F(PromotionMenus, TheTitleIsTheItemsObjectNotWhatItShows) {
    panel.addingPromoAppsOfmantisQRX({"Flipstep"});
    submenu("mantisSubmenuS").items.at(0)->object = "stillreel";
    sim.takeCalls();
    submenu("mantisSubmenuS").items.at(0)->choose();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("sharedWorkspace openURL: " + promotions().at(1).storeAddress));
}

TEST_F(PromotionMenus, ASenderThatStandsForNothingOpensTheDevelopersApplications) {
    const std::string call = std::string("sharedWorkspace openURL: ") + developerSearchLink;
    panel.excuteMyPromo(&sim.nib().menuItem("mantisSubmenuS"));
    panel.excuteMyPromo(&sim.nib().button("dockButton"));
    panel.excuteMyPromo(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre(call, call, call));
}

TEST_F(PromotionMenus, BuildingAnewReplacesTheSubmenus) {
    wake();
    panel.addingPromoAppsOfmantisQRX({"stillreel"});
    EXPECT_EQ(submenu("mantisSubmenuM").items.size(), 1U);
}

} // namespace
} // namespace vistrane
