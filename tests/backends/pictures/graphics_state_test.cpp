#include <thread>

#include "backends/pictures/graphics_state.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using GraphicsState = PicturesTest;

class SomeContext final : public NSGraphicsContext {};

TEST_F(GraphicsState, RestoringBringsBackWhatWasSaved) {
    const auto first = std::make_shared<SomeContext>();
    const auto second = std::make_shared<SomeContext>();
    pictures_.saveGraphicsState();
    pictures_.setCurrentContext(first);
    pictures_.saveGraphicsState();
    pictures_.setCurrentContext(second);
    EXPECT_EQ(currentGraphicsContext(), second);
    pictures_.restoreGraphicsState();
    EXPECT_EQ(currentGraphicsContext(), first);
    pictures_.restoreGraphicsState();
    EXPECT_EQ(currentGraphicsContext(), nullptr);
    // Without a saved state, restoring changes nothing.
    pictures_.setCurrentContext(first);
    pictures_.restoreGraphicsState();
    EXPECT_EQ(currentGraphicsContext(), first);
    pictures_.setCurrentContext(nullptr);
}

TEST_F(GraphicsState, EachThreadHasItsOwn) {
    pictures_.setCurrentContext(std::make_shared<SomeContext>());
    std::thread([] { EXPECT_EQ(currentGraphicsContext(), nullptr); }).join();
    pictures_.setCurrentContext(nullptr);
}

TEST_F(GraphicsState, ThreadsDrawOnePictureAtTheSameTime) {
    const PngSample sample = randomPng({6, 8, true, false}, 40, 30);
    const auto image = load(sample.file);
    const Bytes expected = overBlack(sample.rgba);
    const auto drawMany = [&] {
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(draw(image, 40, 30).rgb, expected);
        }
    };
    std::thread other(drawMany);
    drawMany();
    other.join();
}

TEST_F(GraphicsState, NoContextGivesNoGraphicsContext) {
    EXPECT_EQ(pictures_.graphicsContextWithCGContext(nullptr, false), nullptr);
}

} // namespace
} // namespace vistrane::testing
