#include <functional>
#include <future>
#include <new>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "backends/pictures/SharedPicture.h"
#include "tests/backends/pictures/sharing/CountedPicture.h"
#include "tests/backends/pictures/sharing/FailingAllocation.h"

namespace vistrane::testing {
namespace {

class SharedPictures : public ::testing::Test {
protected:
    std::shared_ptr<const PictureSource> load() {
        return std::make_shared<SharedPicture>(decoding_);
    }
    /// A picture of a view that has said its size.
    std::shared_ptr<const PictureSource> loadForView() {
        auto viewed = load();
        viewed->expectSmaller(11, 7);
        return viewed;
    }

    /// Decodes as for a movie.
    static std::optional<NSError> decode(const PictureSource& picture) {
        constexpr std::size_t stride = std::size_t{4} * CountedPicture::width;
        std::vector<std::uint8_t> rows(stride * CountedPicture::height);
        return picture.readPixels(PixelForm::ARGB, rows.data(), stride);
    }

    static std::optional<std::vector<std::uint32_t>>
    view(const PictureSource& picture, std::size_t width = 11, std::size_t height = 7) {
        // Each row has a gap that must stay unchanged.
        std::vector<std::uint32_t> pixels((width + 1) * height, 5);
        if (picture.readSmaller(width, height, pixels.data(),
                                static_cast<std::ptrdiff_t>(4 * (width + 1)))) {
            return std::nullopt;
        }
        std::vector<std::uint32_t> result;
        for (std::size_t y = 0; y < height; ++y) {
            const auto row = pixels.begin() + static_cast<std::ptrdiff_t>(y * (width + 1));
            result.insert(result.end(), row, row + static_cast<std::ptrdiff_t>(width));
            EXPECT_EQ(row[static_cast<std::ptrdiff_t>(width)], 5U);
        }
        return result;
    }

    /// What a view gets that comes while another user decodes. That decoding ends with `outcome`.
    std::optional<std::vector<std::uint32_t>> viewDuring(const std::function<void()>& outcome) {
        std::promise<void> begun;
        std::promise<void> goOn;
        picture_->whileDecoding = [&] {
            if (picture_->decoded == 1) {
                begun.set_value();
                goOn.get_future().wait();
                outcome();
            }
        };
        const auto written = load();
        const auto viewed = loadForView();
        std::thread writer([&] {
            try {
                decode(*written);
            } catch (const std::bad_alloc&) {
                hasThrown_ = true;
            }
        });
        begun.get_future().wait();
        auto seen = std::async(std::launch::async, [&] { return view(*viewed); });
        goOn.set_value();
        auto pixels = seen.get();
        writer.join();
        return pixels;
    }

    bool hasThrown_ = false;
    std::shared_ptr<CountedPicture> picture_ = std::make_shared<CountedPicture>();
    std::shared_ptr<SharedDecoding> decoding_ = std::make_shared<SharedDecoding>(picture_);
};

TEST_F(SharedPictures, AViewAloneDecodesByItself) {
    const auto viewed = loadForView();
    EXPECT_EQ(view(*viewed), picture_->smaller(11, 7));
    EXPECT_EQ(picture_->decoded, 1);
}

TEST_F(SharedPictures, AViewGetsWhatWasDecodedForAnotherAlsoWhenThatIsGone) {
    for (const bool isGone : {false, true}) {
        picture_->decoded = 0;
        auto written = load();
        const auto viewed = loadForView();
        EXPECT_FALSE(decode(*written));
        if (isGone) {
            written.reset();
        }
        EXPECT_EQ(view(*viewed), picture_->smaller(11, 7));
        EXPECT_EQ(picture_->decoded, 1);
    }
}

TEST_F(SharedPictures, AViewThatComesWhileAnotherDecodesWaitsForIt) {
    EXPECT_EQ(viewDuring([] {}), picture_->smaller(11, 7));
    EXPECT_EQ(picture_->decoded, 1);
}

TEST_F(SharedPictures, AViewDecodesByItselfWhenAnotherThrows) {
    EXPECT_EQ(viewDuring([] { throw std::bad_alloc(); }), picture_->smaller(11, 7));
    EXPECT_TRUE(hasThrown_);
    EXPECT_EQ(picture_->decoded, 2);
    EXPECT_FALSE(decode(*load()));
}

TEST_F(SharedPictures, AViewThatComesBeforeAnotherDecodesWaitsAsLongAsThatMayBegin) {
    const auto viewed = load();
    auto written = load();
    auto seen = std::async(std::launch::async, [&] { return view(*viewed); });
    written.reset();
    EXPECT_EQ(seen.get(), picture_->smaller(11, 7));
    EXPECT_EQ(picture_->decoded, 1);
}

TEST_F(SharedPictures, AViewDecodesByItselfWhenAnotherNeverDoes) {
    const auto written = load();
    const auto viewed = load();
    EXPECT_EQ(view(*viewed), picture_->smaller(11, 7));
    EXPECT_EQ(picture_->decoded, 1);
    EXPECT_FALSE(decode(*written));
    EXPECT_EQ(picture_->decoded, 2);
}

TEST_F(SharedPictures, AnotherSizeThanWasExpectedIsDecodedAgain) {
    const auto written = load();
    const auto viewed = loadForView();
    decode(*written);
    EXPECT_EQ(view(*viewed, 20, 15), picture_->smaller(20, 15));
    EXPECT_EQ(picture_->decoded, 2);
}

TEST_F(SharedPictures, WhatAViewHasGotIsNotKept) {
    const auto written = load();
    const auto viewed = loadForView();
    decode(*written);
    view(*viewed);
    EXPECT_EQ(view(*viewed), picture_->smaller(11, 7));
    EXPECT_EQ(picture_->decoded, 2);
}

TEST_F(SharedPictures, ADamagedPictureIsDamagedForEach) {
    picture_ = std::make_shared<CountedPicture>(true);
    decoding_ = std::make_shared<SharedDecoding>(picture_);
    const auto written = load();
    const auto viewed = loadForView();
    EXPECT_TRUE(decode(*written));
    EXPECT_FALSE(view(*viewed));
}

/// Whichever allocation for the view fails, the other gets its pixels.
TEST_F(SharedPictures, ALackOfMemoryForTheViewIsTheViewsAlone) {
    int failures = 0;
    for (bool hasFailed = true; hasFailed; ++failures) {
        const auto written = load();
        const auto viewed = loadForView();
        std::optional<FailingAllocation> failing;
        picture_->whileDecoding = [&] { failing.emplace(failures); };
        EXPECT_FALSE(decode(*written)) << failures;
        hasFailed = failing && failing->hasFailed();
        failing.reset();
        picture_->whileDecoding = nullptr;
        picture_->decoded = 0;
        EXPECT_EQ(view(*viewed), picture_->smaller(11, 7)) << failures;
        EXPECT_EQ(picture_->decoded, hasFailed ? 1 : 0) << failures;
    }
    EXPECT_GT(failures, 3);
}

TEST_F(SharedPictures, AViewWithoutMemoryGetsAnError) {
    std::vector<std::uint32_t> pixels(std::size_t{11} * 7);
    int failures = 0;
    for (bool hasFailed = true; hasFailed; ++failures) {
        const auto viewed = load();
        const FailingAllocation failing(failures);
        const auto error = viewed->readSmaller(11, 7, pixels.data(), 44);
        hasFailed = failing.hasFailed();
        EXPECT_EQ(error.has_value(), hasFailed) << failures;
    }
    EXPECT_GT(failures, 3);
}

TEST_F(SharedPictures, ManyAtOnceGetTheSame) {
    std::vector<std::thread> threads;
    const auto expected = picture_->smaller(11, 7);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int turn = 0; turn < 50; ++turn) {
                const auto loaded = load();
                loaded->expectSmaller(11, 7);
                if (i % 2 == 0) {
                    EXPECT_FALSE(decode(*loaded));
                } else {
                    EXPECT_EQ(view(*loaded), expected);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace vistrane::testing
