#pragma once

#include <memory>
#include <string>

#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSImage.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Tests pictures. A backend has
///
///     auto& pictures();                              an AppKit, or its picture half
///     std::string emptyFolder();                     a fresh folder's path
///     std::string addPicture(NSSize points);         a picture file's path; without a density
///     std::string addDensePicture(NSSize points);    at 144 dots per inch
///     std::string addDamagedPicture();               the path of a file that is no picture
///     std::shared_ptr<NSData> data(const std::string& bytes);
template <typename Backend>
class ImageContract : public ::testing::Test {
protected:
    auto& pictures() { return backend_.pictures(); }

    std::shared_ptr<NSImage> load(const std::string& path) {
        return pictures().imageWithContentsOfFile(path);
    }

    /// Encodes as stills are saved: to TIFF, to a bitmap, to PNG. Null when a step fails.
    std::shared_ptr<NSData> encode(const NSImage& image) {
        const std::shared_ptr<NSData> tiff = image.TIFFRepresentation();
        const std::shared_ptr<NSBitmapImageRep> bitmap =
            tiff ? pictures().imageRepWithData(tiff) : nullptr;
        return bitmap ? bitmap->representationUsingType(NSBitmapImageFileTypePNG, {}) : nullptr;
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(ImageContract);

TYPED_TEST_P(ImageContract, AMissingFileAndOneOfOtherBytesAreNoPicture) {
    const std::string folder = this->backend_.emptyFolder();
    EXPECT_EQ(this->load(folder + "/missing.png"), nullptr);
    EXPECT_EQ(this->load(folder), nullptr);
    EXPECT_EQ(this->load(""), nullptr);
    EXPECT_EQ(this->load(this->backend_.addDamagedPicture()), nullptr);
}

TYPED_TEST_P(ImageContract, TheSizeIsInPoints) {
    const std::shared_ptr<NSImage> image = this->load(this->backend_.addDensePicture({20.5, 13}));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (NSSize{20.5, 13}));
}

TYPED_TEST_P(ImageContract, APictureKeepsItsSizeWhenEncodedAsPng) {
    const std::shared_ptr<NSImage> image = this->load(this->backend_.addPicture({21, 13}));
    ASSERT_TRUE(image);
    const std::shared_ptr<NSData> png = this->encode(*image);
    ASSERT_TRUE(png);
    EXPECT_GT(png->length(), 0U);
    const std::shared_ptr<NSImage> read = this->pictures().imageWithData(png);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), (NSSize{21, 13}));
}

TYPED_TEST_P(ImageContract, NoDataAndOtherBytesAreNoPicture) {
    EXPECT_EQ(this->pictures().imageWithData(nullptr), nullptr);
    EXPECT_EQ(this->pictures().imageRepWithData(nullptr), nullptr);
    for (const char* bytes : {"", "damaged"}) {
        EXPECT_EQ(this->pictures().imageWithData(this->backend_.data(bytes)), nullptr);
        EXPECT_EQ(this->pictures().imageRepWithData(this->backend_.data(bytes)), nullptr);
    }
}

REGISTER_TYPED_TEST_SUITE_P(ImageContract, AMissingFileAndOneOfOtherBytesAreNoPicture,
                            TheSizeIsInPoints, APictureKeepsItsSizeWhenEncodedAsPng,
                            NoDataAndOtherBytesAreNoPicture);

} // namespace vistrane
