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

    /// Lets the cell draw its knob as the slider does.
    std::vector<std::string> draw(hidenSlidercell& cell, NSRect knob) {
        const Platform platform = sim.platform();
        CGColorSpaceRef space =
            platform.coreGraphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
        std::vector<std::uint8_t> memory(4 * 4 * 4);
        CGContextRef context = platform.coreGraphics.CGBitmapContextCreate(
            memory.data(), 4, 4, 8, 16, space, kCGImageAlphaNoneSkipFirst);
        platform.appKit.saveGraphicsState();
        platform.appKit.setCurrentContext(
            platform.appKit.graphicsContextWithCGContext(context, false));
        sim.takeCalls();
        cell.drawKnob(knob);
        std::vector<std::string> calls = sim.takeCalls();
        platform.appKit.restoreGraphicsState();
        platform.coreGraphics.CFRelease(context);
        platform.coreGraphics.CGColorSpaceRelease(space);
        return calls;
    }
};

TEST_F(SliderCell, TakesItsKnobFromTheResourcesWhenItWakes) {
    hidenSlidercell cell(sim.platform().appKit);
    EXPECT_EQ(cell.knobImage, nullptr);
    cell.awakeFromNib();
    EXPECT_EQ(nameOf(cell.knobImage.get()), "12");
}

TEST_F(SliderCell, IsOfferedToTheInterfaceAndAwakeWhenItIsMade) {
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

TEST_F(SliderCell, DrawsNoKnobWithoutAPicture) {
    sim.pictures().resources.erase("12");
    const auto cell = make();
    EXPECT_EQ(cell->knobImage, nullptr);
    EXPECT_THAT(draw(*cell, {{0.0, 0.0}, {16.0, 16.0}}), IsEmpty());
}

TEST_F(SliderCell, DrawsNoKnobBeforeItIsAwake) {
    hidenSlidercell cell(sim.platform().appKit);
    EXPECT_THAT(draw(cell, {{0.0, 0.0}, {16.0, 16.0}}), IsEmpty());
}

} // namespace
} // namespace vistrane
