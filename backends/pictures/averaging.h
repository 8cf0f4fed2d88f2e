#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Which old pixels fall on each new pixel of a smaller row, and how much of each.
struct AveragedParts {
    /// `to` new pixels from `from` old ones; `to` <= `from`. The weights of a new pixel are
    /// integers that add up to `sum`, which is at most 32767.
    AveragedParts(std::size_t from, std::size_t to, int sum);

    std::size_t count() const { return firsts.size(); }
    const std::int16_t* weightsOf(std::size_t i) const { return weights.data() + i * taps; }

    /// The range of old pixels of each new pixel; the end is not part of it.
    std::vector<std::size_t> firsts;
    std::vector<std::size_t> ends;
    /// Weights of each new pixel; even. Unused ones are 0 and may lie past the last old pixel.
    std::size_t taps = 0;
    std::vector<std::int16_t> weights;
};

/// The sums of the weights of rows, and of the pixels of a row.
constexpr int rowWeights = 256;
constexpr int pixelWeights = 1 << 14;

/// Adds `weight` times each byte to `sums`. The weights of one sum add up to `rowWeights` at most.
void addWeighted(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                 std::size_t count);

/// Makes pixels, 0xFFRRGGBB, of a row of such sums, which are in `form`. The weights of `parts` add
/// up to `pixelWeights`. `parts.taps` + 1 pixels past the row's end must be readable.
void averagePixels(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                   std::uint32_t* pixels);

/// The reference implementations, for every processor.
void addWeightedPlainly(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                        std::size_t count);
void averagePixelsPlainly(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                          std::uint32_t* pixels);

} // namespace vistrane
