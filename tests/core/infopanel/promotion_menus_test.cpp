#include <array>

#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PromotionMenus : public PanelTest {
protected:
    static constexpr std::array names = {"mantisSubmenuS", "mantisSubmenuD", "mantisSubmenuM"};
    static std::string opening(const std::string& address) {
        return "sharedWorkspace openURL: " + address;
    }
    SimMenu& submenu(const std::string& item) {
        return dynamic_cast<SimMenu&>(*sim.nib().menuItem(item).submenu);
    }
};

TEST_F(PromotionMenus, AreBuiltInOrder) {
    panel.addingPromoAppsOfmantisQRX({"frameweave", "Flipstep"});
    EXPECT_THAT(takeProcedure(sim, {"menu1.", "menu2.", "menu3."}),
                ElementsAre("menu -> menu1", "menu -> menu2", "menu -> menu3",
                            // S, then M, then D.
                            "menu1 addItemWithTitle: frameweave keyEquivalent: \"\"",
                            "menu3 addItemWithTitle: frameweave keyEquivalent: \"\"",
                            "menu2 addItemWithTitle: frameweave keyEquivalent: \"\"",
                            "menu1 addItemWithTitle: Flipstep keyEquivalent: \"\"",
                            "menu3 addItemWithTitle: Flipstep keyEquivalent: \"\"",
                            "menu2 addItemWithTitle: Flipstep keyEquivalent: \"\"",
                            "mantisSubmenuS setSubmenu: menu1", "mantisSubmenuD setSubmenu: menu2",
                            "mantisSubmenuM setSubmenu: menu3"));
}

TEST_F(PromotionMenus, HoldEveryPromotionWithItsPictureExceptInTheMenuD) {
    wake();
    for (const char* name : names) {
        ASSERT_EQ(submenu(name).items.size(), promotionTitles().size());
        for (std::size_t i = 0; i < promotionTitles().size(); ++i) {
            const SimMenuItem& item = *submenu(name).items[i];
            EXPECT_EQ(item.title, promotionTitles()[i]);
            EXPECT_EQ(item.object, item.title);
            EXPECT_EQ(item.target, &panel);
            EXPECT_EQ(item.submenu, nullptr);
            EXPECT_EQ(nameOf(item.image.get()),
                      name == std::string("mantisSubmenuD") ? "(null)" : item.title);
        }
    }
}

TEST_F(PromotionMenus, BuildingAnewReplacesTheSubmenus) {
    wake();
    panel.addingPromoAppsOfmantisQRX({"stillreel"});
    for (const char* name : names) {
        EXPECT_EQ(submenu(name).items.size(), 1U);
    }
    panel.addingPromoAppsOfmantisQRX({});
    for (const char* name : names) {
        EXPECT_THAT(submenu(name).items, IsEmpty());
    }
}

TEST_F(PromotionMenus, AMissingPictureLeavesAnItemWithoutOne) {
    sim.pictures().resources.erase("Flipstep");
    panel.addingPromoAppsOfmantisQRX({"Flipstep"});
    EXPECT_EQ(submenu("mantisSubmenuS").items.at(0)->image, nullptr);
    EXPECT_EQ(submenu("mantisSubmenuM").items.at(0)->title, "Flipstep");
}

TEST_F(PromotionMenus, AnItemOpensItsStorePageFromEveryMenu) {
    wake();
    for (const char* name : names) {
        for (std::size_t i = 0; i < promotions().size(); ++i) {
            submenu(name).items.at(i)->choose();
            EXPECT_THAT(sim.takeCalls(), ElementsAre(opening(promotions()[i].storeAddress)));
        }
    }
}

TEST_F(PromotionMenus, TheTitleIsTheItemsObjectNotWhatItShows) {
    panel.addingPromoAppsOfmantisQRX({"Flipstep"});
    submenu("mantisSubmenuS").items.at(0)->object = "stillreel";
    sim.takeCalls();
    submenu("mantisSubmenuS").items.at(0)->choose();
    EXPECT_THAT(sim.takeCalls(), ElementsAre(opening(promotions().at(1).storeAddress)));
}

TEST_F(PromotionMenus, AnythingElseOpensTheDevelopersApplications) {
    panel.addingPromoAppsOfmantisQRX({"flipstep", "Flipstep ", ""});
    sim.takeCalls();
    for (const auto& item : submenu("mantisSubmenuS").items) {
        item->choose();
    }
    // Senders without a represented object.
    panel.excuteMyPromo(&sim.nib().menuItem("mantisSubmenuS"));
    panel.excuteMyPromo(&sim.nib().button("dockButton"));
    panel.excuteMyPromo(nullptr);
    EXPECT_THAT(sim.takeCalls(), ::testing::AllOf(::testing::SizeIs(6),
                                                  ::testing::Each(opening(developerSearchLink))));
}

} // namespace
} // namespace vistrane
