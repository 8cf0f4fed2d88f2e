#include <lcms2.h>
#include <zlib.h>

#include <cmath>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using ColourProfile = PicturesTest;

Bytes saved(cmsHPROFILE profile) {
    cmsUInt32Number length = 0;
    cmsSaveProfileToMem(profile, nullptr, &length);
    Bytes bytes(length);
    cmsSaveProfileToMem(profile, bytes.data(), &length);
    cmsCloseProfile(profile);
    return bytes;
}

constexpr cmsCIExyY d65 = {0.3127, 0.3290, 1.0};

/// sRGB's primaries with values in proportion to light.
Bytes linearRgb() {
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1.0);
    cmsToneCurve* curves[] = {curve, curve, curve};
    const Bytes bytes = saved(cmsCreateRGBProfile(&d65, &primaries, curves));
    cmsFreeToneCurve(curve);
    return bytes;
}

Bytes linearGrey() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1.0);
    const Bytes bytes = saved(cmsCreateGrayProfile(&d65, curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

Bytes withProfile(const Bytes& file, const Bytes& profile, bool whole = true) {
    Bytes packed(compressBound(uLong(profile.size())));
    uLongf length = uLongf(packed.size());
    compress(packed.data(), &length, profile.data(), uLong(profile.size()));
    Bytes data = {'p', 0, 0};
    data.insert(data.end(), packed.begin(),
                packed.begin() + std::ptrdiff_t(whole ? length : length / 2));
    return withChunkBefore(file, "IDAT", chunk("iCCP", data));
}

/// The sRGB value of a share of the full light.
double srgb(double light) {
    return 255 * (light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

void expectLinearTurnedToSrgb(const Bytes& drawn, const Bytes& values) {
    ASSERT_EQ(drawn.size(), values.size());
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        EXPECT_NEAR(drawn[i], srgb(values[i] / 255.0), 1.5) << int(values[i]);
    }
}

TEST_F(ColourProfile, AnotherSpaceIsConvertedToSrgb) {
    for (const int colour : {0, 2}) {
        const PngSample sample = randomPng({colour, 8, false, false}, 16, 16);
        const auto image = load(withProfile(sample.file, colour == 0 ? linearGrey() : linearRgb()));
        expectLinearTurnedToSrgb(draw(image, 16, 16).rgb, overBlack(sample.rgba));
    }
}

TEST_F(ColourProfile, ConvertedPicturesAreSavedConvertedWithTheirAlpha) {
    for (const PngForm& form : {PngForm{6, 8, false, false}, PngForm{4, 8, false, false}}) {
        const PngSample sample = randomPng(form, 8, 8);
        const auto image =
            load(withProfile(sample.file, form.colour == 6 ? linearRgb() : linearGrey()));
        const auto read = readByLibpng(bytesOf(encode(image)));
        ASSERT_TRUE(read);
        for (std::size_t i = 0; i < read->rgba.size(); ++i) {
            const double expected = i % 4 == 3 ? sample.rgba[i] : srgb(sample.rgba[i] / 255.0);
            EXPECT_NEAR(read->rgba[i], expected, 1.5);
        }
    }
}

TEST_F(ColourProfile, AlphaIsMultipliedInAfterTheConversion) {
    const auto image =
        load(withProfile(pngOf(1, 1, [](auto, auto) { return 0x40404080U; }).file, linearRgb()));
    EXPECT_NEAR(draw(image, 1, 1).rgb[0], srgb(64 / 255.0) * 128 / 255, 1.5);
}

TEST_F(ColourProfile, SrgbItselfChangesNoValue) {
    const PngSample sample = randomPng({2, 8, false, false}, 32, 32);
    const auto image = load(withProfile(sample.file, saved(cmsCreate_sRGBProfile())));
    EXPECT_EQ(draw(image, 32, 32).rgb, overBlack(sample.rgba));
}

TEST_F(ColourProfile, ABrokenOrUnfitOneIsIgnored) {
    const PngSample sample = randomPng({2, 8, false, false}, 16, 16);
    const Bytes expected = overBlack(sample.rgba);
    Bytes broken = linearRgb();
    broken.resize(broken.size() / 2);
    std::vector<Bytes> files = {
        withProfile(sample.file, Bytes(500, 'x')),
        withProfile(sample.file, broken),
        withProfile(sample.file, linearRgb(), false),
        withProfile(sample.file, linearGrey()),
        withProfile(sample.file, saved(cmsCreateLab4Profile(nullptr))),
        withProfile(sample.file, Bytes{}),
        withProfile(sample.file, Bytes(std::size_t{9} << 20, 'x')),
    };
    for (const Bytes& data : {Bytes{}, {'a'}, {'a', 0}, {'a', 0, 0}, Bytes(100, 'a')}) {
        files.push_back(withChunkBefore(sample.file, "IDAT", chunk("iCCP", data)));
    }
    for (const Bytes& file : files) {
        const auto image = load(file);
        ASSERT_TRUE(image);
        EXPECT_EQ(draw(image, 16, 16).rgb, expected);
    }
}

} // namespace
} // namespace vistrane::testing
