#pragma once

#include <cstdint>

namespace vistrane {

// ITU-R BT.709-6, item 3.2: Y' = 0.2126 R' + 0.7152 G' + 0.0722 B', Cb = (B' - Y') / 1.8556,
// Cr = (R' - Y') / 1.5748; item 3.4 gives the limited range: 219 steps of luma, 224 of chroma.

/// Weights are fixed-point numbers with this many fraction bits.
constexpr int fractionBits = 16;

struct ChannelWeights {
    std::int32_t red;
    std::int32_t green;
    std::int32_t blue;

    constexpr std::int32_t sum(std::int32_t r, std::int32_t g, std::int32_t b) const {
        return red * r + green * g + blue * b;
    }
};

constexpr std::int32_t fixedPoint(double value) {
    const double scaled = value * (1 << fractionBits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

constexpr double redShare = 0.2126;
constexpr double greenShare = 0.7152;
constexpr double blueShare = 0.0722;
constexpr double lumaScale = 219.0 / 255.0;
constexpr double chromaScale = 224.0 / 255.0;

constexpr ChannelWeights lumaWeights{fixedPoint(redShare * lumaScale),
                                     fixedPoint(greenShare* lumaScale),
                                     fixedPoint(blueShare* lumaScale)};

// Each row of weights adds up to 0, so every grey gives exactly 128.
constexpr std::int32_t blueFromRed = fixedPoint(-redShare / 1.8556 * chromaScale);
constexpr std::int32_t blueFromBlue = fixedPoint((1 - blueShare) / 1.8556 * chromaScale);
constexpr ChannelWeights blueWeights{blueFromRed, -blueFromRed - blueFromBlue, blueFromBlue};
constexpr std::int32_t redFromRed = fixedPoint((1 - redShare) / 1.5748 * chromaScale);
constexpr std::int32_t redFromBlue = fixedPoint(-blueShare / 1.5748 * chromaScale);
constexpr ChannelWeights redWeights{redFromRed, -redFromRed - redFromBlue, redFromBlue};

/// Added to the weighted sum of luma: 16 for black, and one half for rounding.
constexpr std::int32_t lumaOffset = (16 << fractionBits) + (1 << (fractionBits - 1));

/// Chroma is computed from sums with a total weight of eight.
constexpr int chromaBits = fractionBits + 3;
constexpr std::int32_t chromaOffset = (128 << chromaBits) + (1 << (chromaBits - 1));

static_assert((lumaWeights.sum(255, 255, 255) + lumaOffset) >> fractionBits == 235);

} // namespace vistrane
