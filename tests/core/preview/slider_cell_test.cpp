#include <limits>

#include "core/preview/hidenSlidercell.h"
#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A cell as the interface file makes it for one of the window's sliders.
class SliderCell : public ControllerTest {
protected:
    std::shared_ptr<hidenSlidercell> make() {
        return std::dynamic_pointer_cast<hidenSlidercell>(
            sim.nib().makeSliderCell("hidenSlidercell"));
    }

    std::vector<std::string> draw(hidenSlidercell& cell, NSRect knob) {
        sim.takeCalls();
        cell.drawKnob(knob);
        return sim.takeCalls();
    }
};

TEST_F(SliderCell, TakesItsKnobFromTheResourcesWhenTheInterfaceMakesIt) {
    hidenSlidercell asleep(sim.platform().appKit);
    EXPECT_EQ(asleep.knobImage, nullptr);
    const auto cell = make();
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(nameOf(cell->knobImage.get()), "12");
    EXPECT_NE(make(), cell);
}

TEST_F(SliderCell, GivesTickMarksNoPlace) {
    const auto cell = make();
    for (const NSInteger index : {NSInteger{0}, NSInteger{1}, NSInteger{59}, NSInteger{-1},
                                  std::numeric_limits<NSInteger>::max()}) {
        EXPECT_EQ(cell->rectOfTickMarkAtIndex(index), NSZeroRect) << index;
    }
}

TEST_F(SliderCell, StretchesTheWholePictureOverTheKnob) {
    const auto cell = make();
    EXPECT_THAT(
        draw(*cell, {{3.0, 4.5}, {21.0, 7.0}}),
        ElementsAre("12 drawInRect: 3,4.5,21,7 fromRect: 0,0,0,0 operation: 2 fraction: 1"));
}

TEST_F(SliderCell, DrawsNoKnobWithoutAPictureNorBeforeItIsAwake) {
    hidenSlidercell asleep(sim.platform().appKit);
    EXPECT_THAT(draw(asleep, {{0.0, 0.0}, {16.0, 16.0}}), IsEmpty());
    sim.pictures().resources.erase("12");
    const auto cell = make();
    EXPECT_EQ(cell->knobImage, nullptr);
    EXPECT_THAT(draw(*cell, {{0.0, 0.0}, {16.0, 16.0}}), IsEmpty());
}

} // namespace
} // namespace vistrane
