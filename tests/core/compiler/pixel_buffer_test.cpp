#include <limits>

#include "core/compiler/picture_size.h"
#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class PixelBuffer : public CompilerTest {
protected:
    std::shared_ptr<NSImage> picture(double width, double height) {
        return sim.pictures().picture("p", {width, height});
    }
    /// Expects a conversion to fail for lack of a context, and to leave nothing behind.
    void expectNoContext(const std::shared_ptr<NSImage>& image) {
        sim.takeCalls();
        EXPECT_EQ(delegate.fastImageFromNSImage(image), nullptr);
        EXPECT_THAT(sim.logLines(), ElementsAre("CVPixelBufferRef could not create context"));
        EXPECT_EQ(sim.calls().back().substr(0, 20), "CGColorSpaceRelease:");
        EXPECT_EQ(sim.drawing().leftovers(), 0);
    }
};

TEST_F(PixelBuffer, APictureIsDrawnIntoANewBufferStepByStep) {
    const CVPixelBufferRef buffer = delegate.fastImageFromNSImage(picture(4.0, 2.0));
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre("CVPixelBufferCreate: 4x2 format: 32 attributes: {CGImageCompatibility: YES, "
                    "CGBitmapContextCompatibility: YES} -> buffer1",
                    "CVPixelBufferLockBaseAddress: buffer1 flags: 0",
                    "CGColorSpaceCreateWithName: kCGColorSpaceGenericRGB -> colorSpace1",
                    "CGBitmapContextCreate: buffer1 4x2 bitsPerComponent: 8 bytesPerRow: 64 space: "
                    "colorSpace1 bitmapInfo: 6 -> context1",
                    "graphicsContextWithCGContext: context1 flipped: NO", "saveGraphicsState",
                    "setCurrentContext: context1",
                    "p drawAtPoint: 0,0 fromRect: 0,0,0,0 operation: 1 fraction: 1",
                    "restoreGraphicsState", "CVPixelBufferUnlockBaseAddress: buffer1 flags: 0",
                    "CFRelease: context1", "CGColorSpaceRelease: colorSpace1"));
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U);
    // The next one has a buffer of its own.
    EXPECT_NE(delegate.fastImageFromNSImage(picture(4.0, 2.0)), buffer);
    sim.platform().coreVideo.CVBufferRelease(buffer);
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U);
    EXPECT_EQ(sim.drawing().leftovers(), 0);
}

TEST_F(PixelBuffer, ABrokenSizeIsTruncated) {
    const CVPixelBufferRef buffer = delegate.fastImageFromNSImage(picture(640.9, 480.5));
    const SimPixels drawn = sim.drawing().pixels(buffer).value();
    EXPECT_EQ(drawn.width, 640U);
    EXPECT_EQ(drawn.height, 480U);
}

TEST_F(PixelBuffer, APictureThatIsMissingOrHasNoPossibleSizeYieldsNullAndOneLogLine) {
    expectNoContext(nullptr);
    using Limits = std::numeric_limits<double>;
    for (const double side : {0.9, 0.0, -5.0, 20000.0, 1e300, Limits::quiet_NaN(),
                              Limits::infinity(), -Limits::infinity()}) {
        expectNoContext(picture(side, 5.0));
        expectNoContext(picture(5.0, side));
    }
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 0U);
}

TEST_F(PixelBuffer, WithoutAContextTheBufferIsNeitherUnlockedNorReleased) {
    sim.drawing().failsNextContext = true;
    expectNoContext(picture(4.0, 2.0));
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U);
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("CVPixelBufferUnlock"))));
}

TEST_F(PixelBuffer, ThePictureIsNotKept) {
    std::shared_ptr<NSImage> image = picture(4.0, 2.0);
    delegate.fastImageFromNSImage(image);
    EXPECT_EQ(image.use_count(), 1);
}

TEST_F(PixelBuffer, SizesAreTruncatedTowardZero) {
    EXPECT_EQ(truncatedSize(picture(1280.7, 720.2)), (PictureSize{1280, 720}));
    EXPECT_EQ(truncatedSize(picture(1.0, 0.999)), (PictureSize{1, 0}));
    EXPECT_EQ(truncatedSize(nullptr), (PictureSize{0, 0}));
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
}

} // namespace
} // namespace vistrane
