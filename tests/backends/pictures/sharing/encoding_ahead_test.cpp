#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/png_encoding.h"
#include "tests/backends/pictures/sharing/FailingAllocation.h"

namespace vistrane::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;

DecodedPicture smallPicture() {
    const Bytes pixels(std::size_t{3} * 16 * 9, 100);
    return {{16, 9, std::nullopt, false}, "still", *ByteArray::copyOf(pixels)};
}

Bytes fileOf(const PictureSource& picture) {
    const auto file = pngFileOf(picture);
    return file ? Bytes(file->bytes().begin(), file->bytes().end()) : Bytes();
}

TEST(EncodingAhead, ThatFindsNoMemoryIsLeftToTheSaving) {
    const Bytes expected = fileOf(smallPicture());
    ASSERT_FALSE(expected.empty());
    bool hasFailed = true;
    for (int successes = 0; hasFailed; ++successes) {
        SCOPED_TRACE(successes);
        DecodedPicture picture = smallPicture();
        {
            const FailingAllocation failing(successes);
            picture.encodeAhead();
            hasFailed = failing.hasFailed();
        }
        EXPECT_EQ(picture.encodedAhead() == nullptr, hasFailed);
        EXPECT_EQ(fileOf(picture), expected);
    }
}

} // namespace
} // namespace vistrane::testing
