#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/averaging.h"

namespace vistrane {

/// Scales a picture down row by row while it is decoded: each row is still in the cache, and memory
/// never holds the whole large picture.
///
/// Each target pixel is the average of the source area that it covers, computed on the sRGB values.
/// Alpha is ignored. One thread.
class Downscaling final : public PictureRows {
public:
    /// `shape` and `form` describe the source rows. `width` and `height` are from 1 to the
    /// picture's own. The result is written to `pixels` as 0xFFRRGGBB; `stride` is in bytes.
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
    /// The weighted sum of the source rows of the current target row.
    std::vector<std::uint16_t> sums_;
};

} // namespace vistrane
