#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/averaging.h"

namespace vistrane {

/// Makes a picture smaller, row by row as it is decoded: what a view needs of a large picture is
/// made while the rows are in the processor's cache, and the large picture is never there whole.
///
/// Each new pixel is the average of the area that falls on it, of the values as they are; alpha is
/// left out. One thread.
class Downscaling final : public PictureRows {
public:
    /// `shape`, `form`: of the rows that come. `width`, `height`: from 1 to the picture's own.
    /// `pixels`: where the result goes, 0xFFRRGGBB; `stride` is in bytes.
    Downscaling(const PictureShape& shape, PixelForm form, std::size_t width, std::size_t height,
                std::uint32_t* pixels, std::ptrdiff_t stride);

    void begin() override;
    void take(const std::uint8_t* row) override;

private:
    void finishRow();

    PixelForm form_;
    std::size_t length_;
    std::size_t height_;
    AveragedParts across_;
    AveragedParts down_;
    std::uint32_t* pixels_;
    std::ptrdiff_t stride_;

    std::size_t oldRow_ = 0;
    std::size_t newRow_ = 0;
    /// Of the new row's old ones, each times its weight.
    std::vector<std::uint16_t> sums_;
};

} // namespace vistrane
