#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "backends/pictures/Downscaling.h"
#include "backends/pictures/PictureSource.h"
#include "backends/pictures/averaging.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

constexpr std::array forms = {PixelForm::ARGB, PixelForm::RGBA, PixelForm::RGB};

std::size_t redOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 1 : 0;
}

/// Of rows without gaps.
std::vector<std::uint32_t> madeSmaller(const Bytes& rows, PixelForm form, std::uint32_t width,
                                       std::uint32_t height, std::size_t newWidth,
                                       std::size_t newHeight) {
    std::vector<std::uint32_t> pixels(newWidth * newHeight);
    Downscaling smaller({width, height, {}, false}, form, newWidth, newHeight, pixels.data(),
                        static_cast<std::ptrdiff_t>(newWidth * 4));
    smaller.begin();
    for (std::size_t y = 0; y < height; ++y) {
        smaller.take(rows.data() + y * width * bytesPerPixel(form));
    }
    return pixels;
}

/// How much of old pixel `old` falls on new pixel `i`.
double cover(std::size_t i, std::size_t old, double step) {
    const double from = std::max(static_cast<double>(i) * step, static_cast<double>(old));
    const double to = std::min(static_cast<double>(i + 1) * step, static_cast<double>(old + 1));
    return std::max(to - from, 0.0);
}

/// The plain way: everything that falls on the new pixel, by how much of it does.
double average(const Bytes& rows, PixelForm form, std::uint32_t width, std::uint32_t height,
               std::size_t newWidth, std::size_t newHeight, std::size_t x, std::size_t y,
               std::size_t component) {
    const double stepX = static_cast<double>(width) / static_cast<double>(newWidth);
    const double stepY = static_cast<double>(height) / static_cast<double>(newHeight);
    double sum = 0.0;
    for (std::size_t oldY = 0; oldY < height; ++oldY) {
        const double coverY = cover(y, oldY, stepY);
        for (std::size_t oldX = 0; coverY > 0.0 && oldX < width; ++oldX) {
            const std::size_t at =
                (oldY * width + oldX) * bytesPerPixel(form) + redOffset(form) + component;
            sum += rows[at] * coverY * cover(x, oldX, stepX);
        }
    }
    return sum / (stepX * stepY);
}

TEST(Averaging, EveryWayOfAddingRowsGivesTheSame) {
    std::mt19937 random(1);
    for (std::size_t count = 0; count < 100; ++count) {
        const Bytes row = randomBytes(random, count);
        std::vector<std::uint16_t> fast(count + 1, 1000);
        std::vector<std::uint16_t> plain(count + 1, 1000);
        for (const unsigned weight : {0U, 1U, 77U, 178U}) {
            addWeighted(row.data(), weight, fast.data(), count);
            addWeightedPlainly(row.data(), weight, plain.data(), count);
        }
        EXPECT_EQ(fast, plain) << count;
        EXPECT_EQ(fast[count], 1000);
    }
}

TEST(Averaging, EveryWayOfMakingPixelsGivesTheSame) {
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers in every run
    std::mt19937 random(4);
    for (const PixelForm form : forms) {
        for (std::size_t from = 1; from < 70; ++from) {
            const std::size_t to = 1 + random() % from;
            const AveragedParts parts(from, to, pixelWeights);
            std::vector<std::uint16_t> sums((from + parts.taps + 1) * bytesPerPixel(form));
            for (std::uint16_t& sum : sums) {
                // Each fifth is white.
                sum = static_cast<std::uint16_t>(random() % 5 == 0 ? 65280 : random() % 65281);
            }
            std::vector<std::uint32_t> fast(to);
            std::vector<std::uint32_t> plain(to);
            averagePixels(sums.data(), form, parts, fast.data());
            averagePixelsPlainly(sums.data(), form, parts, plain.data());
            EXPECT_EQ(fast, plain) << from << " to " << to;
        }
    }
}

TEST(Averaging, TheWeightsOfAPixelAddUpHoweverManyItIsMadeOf) {
    for (const std::size_t from : {1U, 2U, 7U, 100U, 1080U, 7000U}) {
        for (const std::size_t to : {std::size_t{1}, (from + 1) / 2, from - from / 3, from}) {
            const AveragedParts parts(from, to, rowWeights);
            ASSERT_EQ(parts.count(), to);
            for (std::size_t i = 0; i < to; ++i) {
                int sum = 0;
                for (std::size_t tap = 0; tap < parts.taps; ++tap) {
                    EXPECT_GE(parts.weightsOf(i)[tap], 0);
                    sum += parts.weightsOf(i)[tap];
                }
                EXPECT_EQ(sum, rowWeights);
                EXPECT_LE(parts.firsts[i], i == 0 ? 0 : parts.ends[i - 1]);
            }
            EXPECT_EQ(parts.ends[to - 1], from);
        }
    }
}

TEST(SmallerPictures, AreTheAverageOfWhatFallsOnEachPixel) {
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers in every run
    std::mt19937 random(11);
    for (int turn = 0; turn < 60; ++turn) {
        const PixelForm form = forms[static_cast<std::size_t>(turn) % forms.size()];
        const auto width = static_cast<std::uint32_t>(1 + random() % 60);
        const auto height = static_cast<std::uint32_t>(1 + random() % 60);
        const std::size_t newWidth = 1 + random() % width;
        const std::size_t newHeight = 1 + random() % height;
        const Bytes rows = randomBytes(random, bytesPerPixel(form) * width * height);
        const auto pixels = madeSmaller(rows, form, width, height, newWidth, newHeight);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            for (std::size_t component = 0; component < 3; ++component) {
                const double value = pixels[i] >> (16 - 8 * component) & 0xFF;
                EXPECT_NEAR(value,
                            average(rows, form, width, height, newWidth, newHeight, i % newWidth,
                                    i / newWidth, component),
                            2.0)
                    << width << " x " << height << " to " << newWidth << " x " << newHeight;
            }
            EXPECT_EQ(pixels[i] >> 24, 0xFFU);
        }
    }
}

TEST(SmallerPictures, OneColourStaysWhatItIs) {
    for (const std::uint8_t value : Bytes{0, 1, 127, 254, 255}) {
        const Bytes rows(std::size_t{3} * 50 * 40, value);
        for (const std::uint32_t pixel : madeSmaller(rows, PixelForm::RGB, 50, 40, 7, 11)) {
            EXPECT_EQ(pixel, 0xFF000000U | value * 0x010101U);
        }
    }
}

TEST(SmallerPictures, AtTheSameSizeNothingChanges) {
    std::mt19937 random(5);
    const Bytes rows = randomBytes(random, std::size_t{3} * 20 * 10);
    const auto pixels = madeSmaller(rows, PixelForm::RGB, 20, 10, 20, 10);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        EXPECT_EQ(pixels[i],
                  0xFF000000U | rows[3 * i] * 65536U | rows[3 * i + 1] * 256U | rows[3 * i + 2]);
    }
}

/// What comes, and how often it began.
class KeptRows final : public PictureRows {
public:
    explicit KeptRows(std::size_t length) : length_(length) {}
    void begin() override { bytes.clear(); }
    void take(const std::uint8_t* row) override { bytes.insert(bytes.end(), row, row + length_); }

    Bytes bytes;

private:
    std::size_t length_;
};

std::shared_ptr<const PictureSource> sourceOf(const Bytes& file) {
    const auto result = pictureFromPng(DataBytes::copyOf(file), "a picture", {});
    const auto* source = std::get_if<std::shared_ptr<const PictureSource>>(&result);
    return source != nullptr ? *source : nullptr;
}

TEST(PassedRows, AreThoseThatAreReadOfEveryForm) {
    for (const PngForm& pngForm : allPngForms()) {
        const auto source = sourceOf(randomPng(pngForm, 37, 19).file);
        ASSERT_TRUE(source) << pngForm.text();
        for (const PixelForm form : forms) {
            const std::size_t length = bytesPerPixel(form) * 37;
            Bytes read(length * 19);
            ASSERT_FALSE(source->readPixels(form, read.data(), std::ptrdiff_t(length)));
            KeptRows passed(length);
            ASSERT_FALSE(source->passRows(form, passed));
            EXPECT_EQ(passed.bytes, read) << pngForm.text();
        }
    }
}

/// What libpng makes of a damaged file counts, also when the damage shows in the last row only.
TEST(PassedRows, OfADamagedFileEndInTheSameError) {
    const Bytes file = randomPng({}, 64, 64).file;
    for (const std::size_t fromEnd : {1U, 40U, 2000U}) {
        const auto source = sourceOf(withDamagedPixels(file, fromEnd));
        ASSERT_TRUE(source);
        constexpr std::size_t length = std::size_t{3} * 64;
        Bytes read(length * 64);
        const auto expected = source->readPixels(PixelForm::RGB, read.data(), length);
        KeptRows passed(length);
        const auto error = source->passRows(PixelForm::RGB, passed);
        ASSERT_EQ(error.has_value(), expected.has_value()) << fromEnd;
        std::array<std::uint32_t, 64> pixels{};
        EXPECT_EQ(source->readSmaller(8, 8, pixels.data(), 32).has_value(), expected.has_value());
        if (expected) {
            EXPECT_EQ(error->localizedDescription, expected->localizedDescription);
        } else {
            EXPECT_EQ(passed.bytes, read);
        }
    }
}

TEST(PassedRows, MakeASmallerPicture) {
    const PngSample sample = randomPng({}, 64, 48);
    const auto source = sourceOf(sample.file);
    ASSERT_TRUE(source);
    std::vector<std::uint32_t> pixels(260);
    ASSERT_FALSE(source->readSmaller(20, 13, pixels.data(), 80));
    EXPECT_EQ(pixels, madeSmaller(sample.rgba, PixelForm::RGBA, 64, 48, 20, 13));
}

} // namespace
} // namespace vistrane::testing
