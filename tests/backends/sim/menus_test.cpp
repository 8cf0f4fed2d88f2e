#include <gmock/gmock.h>

#include "backends/sim/Sim.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SimMenus : public ::testing::Test {
protected:
    std::shared_ptr<NSMenuItem> add(NSMenu& menu, const std::string& title) {
        return menu.addItemWithTitle(
            title, [this](NSObject* sender) { senders.push_back(sender); }, "");
    }

    Sim sim;
    Platform platform = sim.platform();
    std::vector<NSObject*> senders;
};

class Cell final : public NSSliderCell {
public:
    void awakeFromNib() override { ++wakings; }
    NSRect rectOfTickMarkAtIndex(NSInteger) override { return NSZeroRect; }
    void drawKnob(NSRect) override {}
    int wakings = 0;
};

TEST_F(SimMenus, AnItemSendsItselfOnceItHasATarget) {
    SimMenu& menu = sim.nib().menu("sMenu");
    const auto item = add(menu, "Item");
    menu.items.at(0)->choose();
    EXPECT_THAT(senders, IsEmpty());
    item->setTarget(&menu);
    menu.items.at(0)->choose();
    EXPECT_THAT(senders, ElementsAre(item.get()));
    EXPECT_THAT(sim.calls(), ElementsAre("sMenu addItemWithTitle: Item keyEquivalent: \"\"",
                                         "sMenu.Item setTarget: sMenu"));
}

TEST_F(SimMenus, AMenuThatIsGivenToTwoItemsIsAMisuse) {
    const auto menu = platform.appKit.menu();
    sim.nib().menuItem("a").setSubmenu(menu);
    sim.nib().menuItem("b").setSubmenu(menu);
    EXPECT_THAT(sim.misuses(), ElementsAre("b setSubmenu: menu1 is another item's"));
}

TEST_F(SimMenus, AMenuThatWasTakenAwayMayGoToAnotherItem) {
    const auto menu = platform.appKit.menu();
    sim.nib().menuItem("a").setSubmenu(menu);
    sim.nib().menuItem("a").setSubmenu(menu);
    sim.nib().menuItem("a").setSubmenu(nullptr);
    sim.nib().menuItem("b").setSubmenu(menu);
    EXPECT_THAT(sim.misuses(), IsEmpty());
}

TEST_F(SimMenus, AMenuTouchedOffTheMainThreadIsAMisuse) {
    const auto thread = platform.foundation.threadWithEntry([&] {
        platform.appKit.menu();
        sim.nib().menu("sMenu").cancelTracking();
        platform.appKit.sharedApplication().setActivationPolicy(
            NSApplicationActivationPolicyRegular);
    });
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(sim.misuses(),
                ElementsAre("menu1: not on the main thread",
                            "sMenu cancelTracking: not on the main thread",
                            "sharedApplication setActivationPolicy: 0: not on the main thread"));
}

TEST_F(SimMenus, ACellIsMadeAwakeByItsClass) {
    sim.nib().sliderCell("Cell", [] { return std::make_shared<Cell>(); });
    const auto cell = std::dynamic_pointer_cast<Cell>(sim.nib().makeSliderCell("Cell"));
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->wakings, 1);
    EXPECT_EQ(sim.nib().makeSliderCell("Other"), nullptr);
}

TEST_F(SimMenus, ACellClassThatIsOfferedTwiceIsAMisuse) {
    sim.nib().sliderCell("Cell", [] { return std::make_shared<Cell>(); });
    sim.nib().sliderCell("Cell", [] { return std::make_shared<Cell>(); });
    EXPECT_THAT(sim.misuses(), ElementsAre("sliderCell: Cell is offered twice"));
}

TEST_F(SimMenus, StretchingAPictureWithoutAContextIsAMisuse) {
    platform.appKit.imageNamed("12")->drawInRect({{0.0, 0.0}, {1.0, 1.0}}, NSZeroRect,
                                                 NSCompositingOperationSourceOver, 1.0);
    EXPECT_THAT(sim.misuses(), ElementsAre("drawInRect: the thread has no current context"));
}

} // namespace
} // namespace vistrane
