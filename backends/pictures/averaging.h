#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// For each of a row of new pixels: the old ones that fall on it, and how much of each.
struct AveragedParts {
    /// From `from` old pixels to `to` new ones, at most as many. The weights of a new pixel are
    /// whole numbers that add up to `sum`, at most 32767.
    AveragedParts(std::size_t from, std::size_t to, int sum);

    std::size_t count() const { return firsts.size(); }
    const std::int16_t* weightsOf(std::size_t i) const { return weights.data() + i * taps; }

    /// Of the old pixels, for each new one.
    std::vector<std::size_t> firsts;
    std::vector<std::size_t> ends;
    /// An even number. Weights of 0 fill up what a new pixel does not need, past the last old pixel
    /// as well.
    std::size_t taps = 0;
    std::vector<std::int16_t> weights;
};

/// What the weights of rows add up to, and those of the pixels of a row.
constexpr int rowWeights = 256;
constexpr int pixelWeights = 1 << 14;

/// Adds `weight` times each byte. The weights of one sum are at most `rowWeights` altogether.
void addWeighted(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                 std::size_t count);

/// Makes pixels, 0xFFRRGGBB, of a row of such sums, which are in `form`. `parts` have
/// `pixelWeights`; so many pixels as they have taps and one more can be read past the row's end.
void averagePixels(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                   std::uint32_t* pixels);

/// The same in plain C++, for any processor; the tests compare them.
void addWeightedPlainly(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                        std::size_t count);
void averagePixelsPlainly(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                          std::uint32_t* pixels);

} // namespace vistrane
