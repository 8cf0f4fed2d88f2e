#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/ImageUse.h"
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
///     void putPicture(const std::string& path, NSSize points);   replaces a file
///     void damageFile(const std::string& path);                  it is no picture any more
///     void removeFile(const std::string& path);
///     void settle();           waits until it is sure that a further change of a file is noticed
///     void awaitExpected();    waits until the hints are worked off
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

TYPED_TEST_P(ImageContract, AnExpectedPictureIsWhatItsFileIsWhenItIsLoaded) {
    const std::string folder = this->backend_.emptyFolder();
    const auto pathOf = [&](const char* name) { return folder + "/" + name + ".png"; };
    std::vector<std::string> paths;
    for (const char* name : {"same", "replaced", "removed", "added", "damaged"}) {
        paths.push_back(pathOf(name));
        if (paths.size() != 4) {
            this->backend_.putPicture(paths.back(), {21, 13});
        }
    }
    paths.push_back(folder);
    this->backend_.settle();
    const auto list = std::make_shared<const std::vector<std::string>>(paths);
    for (const ImageUse use : {ImageUse::View, ImageUse::Movie}) {
        this->pictures().expectImages(list, 0, use);
    }
    this->backend_.awaitExpected();
    this->backend_.putPicture(paths[1], {5, 8});
    this->backend_.removeFile(paths[2]);
    this->backend_.putPicture(paths[3], {6, 9});
    this->backend_.damageFile(paths[4]);
    const std::vector<NSSize> sizes = {{21, 13}, {5, 8}, {0, 0}, {6, 9}, {0, 0}, {0, 0}};
    for (const ImageUse use : {ImageUse::View, ImageUse::Movie}) {
        for (std::size_t at = 0; at < paths.size(); ++at) {
            const auto image = this->load(paths[at]);
            EXPECT_EQ(image ? image->size() : NSSize{}, sizes[at]) << paths[at];
        }
        // Neither an end of the list nor no list is an error.
        this->pictures().expectImages(list, paths.size(), use);
        this->pictures().expectImages(nullptr, 0, use);
    }
    this->backend_.awaitExpected();
}

REGISTER_TYPED_TEST_SUITE_P(ImageContract, AMissingFileAndOneOfOtherBytesAreNoPicture,
                            TheSizeIsInPoints, APictureKeepsItsSizeWhenEncodedAsPng,
                            NoDataAndOtherBytesAreNoPicture,
                            AnExpectedPictureIsWhatItsFileIsWhenItIsLoaded);

} // namespace vistrane
