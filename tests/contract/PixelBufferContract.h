#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/corevideo/CoreVideo.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Tests pixel buffers and drawing into them. A backend has
///
///     CoreVideo& coreVideo();
///     CoreGraphics& coreGraphics();
///     auto& pictures();                        an AppKit, or its picture half
///     std::string addPicture(NSSize points);   a picture file's path; a pixel is a point, and its
///                                              colour is its place: red is the column, green the
///                                              row from the top, blue is 90
template <typename Backend>
class PixelBufferContract : public ::testing::Test {
protected:
    using Pixel = std::array<int, 3>;
    static constexpr std::uint8_t untouched = 200;
    static constexpr std::uint32_t skipFirst = kCGImageAlphaNoneSkipFirst;

    CoreVideo& video() { return backend_.coreVideo(); }
    CoreGraphics& graphics() { return backend_.coreGraphics(); }

    CVReturn create(std::size_t width, std::size_t height, CVPixelBufferRef* buffer) {
        return video().CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, buffer);
    }

    /// A locked buffer whose pixels are `untouched`.
    CVPixelBufferRef createLocked(std::size_t width, std::size_t height) {
        CVPixelBufferRef buffer = nullptr;
        EXPECT_EQ(create(width, height, &buffer), kCVReturnSuccess);
        EXPECT_EQ(video().CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
        std::fill_n(rows(buffer), video().CVPixelBufferGetBytesPerRow(buffer) * height, untouched);
        return buffer;
    }
    void unlockAndRelease(CVPixelBufferRef buffer) {
        EXPECT_EQ(video().CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
        video().CVBufferRelease(buffer);
    }

    std::uint8_t* rows(CVPixelBufferRef buffer) {
        return static_cast<std::uint8_t*>(video().CVPixelBufferGetBaseAddress(buffer));
    }
    Pixel pixel(CVPixelBufferRef buffer, std::size_t x, std::size_t y) {
        const std::uint8_t* at =
            rows(buffer) + y * video().CVPixelBufferGetBytesPerRow(buffer) + 4 * x;
        return {at[1], at[2], at[3]};
    }

    /// Expects the pixel at (x, y) to be `expected(x, y)`.
    template <typename Expected>
    void expectPixels(CVPixelBufferRef buffer, int width, int height, const Expected& expected) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                EXPECT_EQ(pixel(buffer, static_cast<std::size_t>(x), static_cast<std::size_t>(y)),
                          expected(x, y))
                    << x << ", " << y;
            }
        }
    }

    /// Draws a new picture of that size into a locked buffer.
    void draw(NSSize picture, NSPoint point, CVPixelBufferRef buffer, std::size_t width,
              std::size_t height) {
        auto& kit = backend_.pictures();
        const std::shared_ptr<NSImage> image =
            kit.imageWithContentsOfFile(backend_.addPicture(picture));
        ASSERT_TRUE(image);
        CGColorSpaceRef space = graphics().CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
        CGContextRef context = graphics().CGBitmapContextCreate(
            rows(buffer), width, height, 8, video().CVPixelBufferGetBytesPerRow(buffer), space,
            skipFirst);
        ASSERT_NE(context, nullptr);
        kit.saveGraphicsState();
        kit.setCurrentContext(kit.graphicsContextWithCGContext(context, false));
        image->drawAtPoint(point, NSZeroRect, NSCompositingOperationCopy, 1.0);
        kit.restoreGraphicsState();
        graphics().CGColorSpaceRelease(space);
        graphics().CFRelease(context);
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(PixelBufferContract);

TYPED_TEST_P(PixelBufferContract, RowsHoldTheirPixels) {
    for (const std::size_t width : {std::size_t{1}, std::size_t{63}, std::size_t{1920}}) {
        CVPixelBufferRef buffer = nullptr;
        ASSERT_EQ(this->create(width, 3, &buffer), kCVReturnSuccess);
        ASSERT_NE(buffer, nullptr);
        EXPECT_GE(this->video().CVPixelBufferGetBytesPerRow(buffer), 4 * width);
        this->video().CVBufferRelease(buffer);
    }
}

TYPED_TEST_P(PixelBufferContract, TheAddressIsValidWhileLockedAndPixelsAreKept) {
    CVPixelBufferRef buffer = this->createLocked(4, 4);
    EXPECT_EQ(this->video().CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
    EXPECT_EQ(this->video().CVPixelBufferGetBaseAddress(buffer), nullptr);
    EXPECT_EQ(this->video().CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
    EXPECT_EQ(this->pixel(buffer, 3, 3), (typename TestFixture::Pixel{200, 200, 200}));
    this->unlockAndRelease(buffer);
}

TYPED_TEST_P(PixelBufferContract, ImpossibleSizesAreRefusedAndLeaveTheResultUnchanged) {
    CVPixelBufferRef before = nullptr;
    ASSERT_EQ(this->create(1, 1, &before), kCVReturnSuccess);
    CVPixelBufferRef buffer = before;
    EXPECT_NE(this->create(0, 4, &buffer), kCVReturnSuccess);
    EXPECT_NE(this->create(4, 0, &buffer), kCVReturnSuccess);
    EXPECT_NE(this->create(0, 0, &buffer), kCVReturnSuccess);
    EXPECT_NE(this->create(SIZE_MAX / 2, 4, &buffer), kCVReturnSuccess);
    EXPECT_NE(this->create(SIZE_MAX, SIZE_MAX, &buffer), kCVReturnSuccess);
    EXPECT_EQ(buffer, before);
    this->video().CVBufferRelease(before);
}

TYPED_TEST_P(PixelBufferContract, OtherFormatsAndANullResultAreRefused) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_NE(this->video().CVPixelBufferCreate(4, 4, 24, {}, &buffer), kCVReturnSuccess);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_NE(this->create(4, 4, nullptr), kCVReturnSuccess);
}

TYPED_TEST_P(PixelBufferContract, NullObjectsAreAccepted) {
    EXPECT_NE(this->video().CVPixelBufferLockBaseAddress(nullptr, 0), kCVReturnSuccess);
    EXPECT_NE(this->video().CVPixelBufferUnlockBaseAddress(nullptr, 0), kCVReturnSuccess);
    EXPECT_EQ(this->video().CVPixelBufferGetBaseAddress(nullptr), nullptr);
    EXPECT_EQ(this->video().CVPixelBufferGetBytesPerRow(nullptr), 0U);
    this->video().CVBufferRelease(nullptr);
    this->video().CVPixelBufferPoolRelease(nullptr);
    this->graphics().CGColorSpaceRelease(nullptr);
    this->graphics().CFRelease(nullptr);
}

TYPED_TEST_P(PixelBufferContract, AContextNeedsMemoryAndPixels) {
    std::array<std::uint8_t, 64> memory{};
    CGColorSpaceRef space = this->graphics().CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    ASSERT_NE(space, nullptr);
    const auto make = [&](void* data, std::size_t width, std::size_t height) {
        return this->graphics().CGBitmapContextCreate(data, width, height, 8, 16, space,
                                                      TestFixture::skipFirst);
    };
    EXPECT_EQ(make(nullptr, 4, 4), nullptr);
    EXPECT_EQ(make(memory.data(), 0, 4), nullptr);
    EXPECT_EQ(make(memory.data(), 4, 0), nullptr);
    CGContextRef context = make(memory.data(), 4, 4);
    EXPECT_NE(context, nullptr);
    this->graphics().CFRelease(context);
    this->graphics().CGColorSpaceRelease(space);
}

TYPED_TEST_P(PixelBufferContract, FormsThatCannotBeDrawnIntoGiveNoContext) {
    std::array<std::uint8_t, 64> memory{};
    CGColorSpaceRef space = this->graphics().CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    const auto make = [&](std::size_t width, std::size_t bits, std::size_t stride,
                          CGColorSpaceRef colors, std::uint32_t info) {
        return this->graphics().CGBitmapContextCreate(memory.data(), width, 4, bits, stride, colors,
                                                      info);
    };
    constexpr std::uint32_t info = TestFixture::skipFirst;
    EXPECT_EQ(make(4, 16, 16, space, info), nullptr);
    EXPECT_EQ(make(4, 8, 15, space, info), nullptr);
    EXPECT_EQ(make(4, 8, 16, nullptr, info), nullptr);
    EXPECT_EQ(make(4, 8, 16, space, info + 1), nullptr);
    EXPECT_EQ(make(SIZE_MAX / 4 + 1, 8, 16, space, info), nullptr);
    this->graphics().CGColorSpaceRelease(space);
}

TYPED_TEST_P(PixelBufferContract, APictureOfTheBuffersSizeFillsEveryPixel) {
    CVPixelBufferRef buffer = this->createLocked(21, 13);
    ASSERT_NO_FATAL_FAILURE(this->draw({21, 13}, {0, 0}, buffer, 21, 13));
    this->expectPixels(buffer, 21, 13, [](int x, int y) {
        return typename TestFixture::Pixel{x, y, 90};
    });
    this->unlockAndRelease(buffer);
}

TYPED_TEST_P(PixelBufferContract, ASmallerPictureLiesWithItsBottomLeftAtThePoint) {
    CVPixelBufferRef buffer = this->createLocked(8, 6);
    ASSERT_NO_FATAL_FAILURE(this->draw({3, 2}, {2, 1}, buffer, 8, 6));
    this->expectPixels(buffer, 8, 6, [](int x, int y) {
        // Rows 3 and 4 from the top are rows 2 and 1 from the bottom.
        const bool isDrawn = x >= 2 && x < 5 && y >= 3 && y < 5;
        return isDrawn ? typename TestFixture::Pixel{x - 2, y - 3, 90}
                       : typename TestFixture::Pixel{200, 200, 200};
    });
    this->unlockAndRelease(buffer);
}

TYPED_TEST_P(PixelBufferContract, ALargerPictureIsCutOff) {
    CVPixelBufferRef buffer = this->createLocked(8, 6);
    ASSERT_NO_FATAL_FAILURE(this->draw({20, 10}, {0, 0}, buffer, 8, 6));
    EXPECT_EQ(this->pixel(buffer, 0, 0), (typename TestFixture::Pixel{0, 4, 90}));
    EXPECT_EQ(this->pixel(buffer, 7, 5), (typename TestFixture::Pixel{7, 9, 90}));
    this->unlockAndRelease(buffer);
}

REGISTER_TYPED_TEST_SUITE_P(PixelBufferContract, RowsHoldTheirPixels,
                            TheAddressIsValidWhileLockedAndPixelsAreKept,
                            ImpossibleSizesAreRefusedAndLeaveTheResultUnchanged,
                            OtherFormatsAndANullResultAreRefused, NullObjectsAreAccepted,
                            AContextNeedsMemoryAndPixels, FormsThatCannotBeDrawnIntoGiveNoContext,
                            APictureOfTheBuffersSizeFillsEveryPixel,
                            ASmallerPictureLiesWithItsBottomLeftAtThePoint, ALargerPictureIsCutOff);

} // namespace vistrane
