#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Which source pixels each pixel of a smaller row averages, and with which weights.
struct AveragedParts {
    /// Scales `from` source pixels to `to` target pixels; `to` <= `from`. The weights of a target
    /// pixel are integers that add up to `sum`, which is at most 32767.
    AveragedParts(std::size_t from, std::size_t to, int sum);

    std::size_t count() const { return firsts.size(); }
    const std::int16_t* weightsOf(std::size_t i) const { return weights.data() + i * taps; }

    /// The range of source pixels of each target pixel, excluding the end.
    std::vector<std::size_t> firsts;
    std::vector<std::size_t> ends;
    /// The number of weights of each target pixel; even. Unused weights are 0 and may lie past the
    /// last source pixel.
    std::size_t taps = 0;
    std::vector<std::int16_t> weights;
};

/// The sum of the weights of rows, and that of the pixels of a row.
constexpr int rowWeights = 256;
constexpr int pixelWeights = 1 << 14;

/// Adds `weight` times each byte to `sums`. The weights of a sum add up to at most `rowWeights`.
void addWeighted(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                 std::size_t count);

/// Converts a row of such sums, in `form`, to 0xFFRRGGBB pixels. The weights of `parts` add up to
/// `pixelWeights`. `parts.taps` + 1 pixels past the row's end must be readable.
void averagePixels(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                   std::uint32_t* pixels);

/// The reference implementations, which every processor can run.
void addWeightedPlainly(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                        std::size_t count);
void averagePixelsPlainly(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                          std::uint32_t* pixels);

} // namespace vistrane
