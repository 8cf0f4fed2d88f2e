#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PixelBuffers = PicturesTest;

CVPixelBufferRef make(MediaCoreVideo& video, std::size_t width, std::size_t height) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_EQ(video.CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, &buffer),
              kCVReturnSuccess);
    return buffer;
}

TEST_F(PixelBuffers, RowsStartAtMultiplesOf64BytesAndAreBlack) {
    CVPixelBufferRef buffer = make(video_, 17, 3);
    const PixelBuffer& pixels = *PixelBuffer::from(buffer);
    EXPECT_EQ(pixels.width(), 17U);
    EXPECT_EQ(pixels.height(), 3U);
    EXPECT_EQ(pixels.bytesPerRow(), 128U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pixels.bytes()) % 64, 0U);
    for (std::size_t i = 0; i < 3 * 128; ++i) {
        EXPECT_EQ(pixels.bytes()[i], 0);
    }
    video_.CVBufferRelease(buffer);
}

TEST_F(PixelBuffers, SizesBeyondTheLimitsAreRefused) {
    CVPixelBufferRef buffer = nullptr;
    for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{32769, 1},
                                        {1, 32769},
                                        {32768, 32768},
                                        {SIZE_MAX / 4, 2}}) {
        EXPECT_EQ(video_.CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, &buffer),
                  kCVReturnInvalidSize);
    }
}

TEST_F(PixelBuffers, LocksAreCounted) {
    CVPixelBufferRef buffer = make(video_, 4, 4);
    EXPECT_EQ(video_.CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnInvalidArgument);
    video_.CVPixelBufferLockBaseAddress(buffer, 0);
    video_.CVPixelBufferLockBaseAddress(buffer, 0);
    video_.CVPixelBufferUnlockBaseAddress(buffer, 0);
    EXPECT_NE(video_.CVPixelBufferGetBaseAddress(buffer), nullptr);
    video_.CVPixelBufferUnlockBaseAddress(buffer, 0);
    EXPECT_EQ(video_.CVPixelBufferGetBaseAddress(buffer), nullptr);
    video_.CVBufferRelease(buffer);
}

TEST_F(PixelBuffers, APoolIsNotFreedByItsRelease) {
    PixelBufferPool pool;
    video_.CVPixelBufferPoolRelease(&pool);
    video_.CVPixelBufferPoolRelease(&pool);
}

TEST_F(PixelBuffers, ARetainedBufferOutlivesItsMaker) {
    CVPixelBufferRef buffer = make(video_, 4, 4);
    PixelBuffer::from(buffer)->retain();
    video_.CVBufferRelease(buffer);
    PixelBuffer::from(buffer)->bytes()[0] = 1;
    PixelBuffer::from(buffer)->release();
}

TEST_F(PixelBuffers, ABufferReleasedWhileLockedStaysUntilItIsUnlockedOrItsKitEnds) {
    MediaCoreVideo video;
    CVPixelBufferRef unlocked = make(video, 4, 4);
    CVPixelBufferRef locked = make(video, 4, 4);
    for (CVPixelBufferRef buffer : {unlocked, locked}) {
        video.CVPixelBufferLockBaseAddress(buffer, 0);
        video.CVBufferRelease(buffer);
        EXPECT_NE(video.CVPixelBufferGetBaseAddress(buffer), nullptr);
    }
    video.CVPixelBufferUnlockBaseAddress(unlocked, 0);
}

TEST_F(PixelBuffers, TheFirstDamageStays) {
    PixelBuffer* buffer = PixelBuffer::make(2, 2);
    EXPECT_FALSE(buffer->damage());
    buffer->markDamaged({"a", 1, "first"});
    buffer->markDamaged({"a", 2, "second"});
    EXPECT_EQ(buffer->damage()->code, 1);
    buffer->release();
}

TEST_F(PixelBuffers, AContextReachesNeitherBeyondALockedBufferNorBeyondAllAddresses) {
    CVPixelBufferRef buffer = make(video_, 4, 4);
    video_.CVPixelBufferLockBaseAddress(buffer, 0);
    void* rows = video_.CVPixelBufferGetBaseAddress(buffer);
    CGColorSpaceRef space = graphics_.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    EXPECT_EQ(graphics_.CGBitmapContextCreate(rows, 4, 5, 8, 64, space, 6), nullptr);
    EXPECT_EQ(graphics_.CGBitmapContextCreate(rows, 4, 4, 8, 128, space, 6), nullptr);
    std::uint8_t memory[64] = {};
    EXPECT_EQ(graphics_.CGBitmapContextCreate(memory, 4, 4, 8, SIZE_MAX, space, 6), nullptr);
    video_.CVPixelBufferUnlockBaseAddress(buffer, 0);
    graphics_.CGColorSpaceRelease(space);
    video_.CVBufferRelease(buffer);
}

} // namespace
} // namespace vistrane::testing
