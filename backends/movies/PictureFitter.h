#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "backends/movies/color_conversion.h"
#include "backends/pictures/resampling.h"

namespace vistrane {

/// The area of a picture inside a frame of another size.
struct FittedArea {
    std::size_t x = 0;
    std::size_t y = 0;
    std::size_t width = 0;
    std::size_t height = 0;
    bool operator==(const FittedArea&) const = default;
};

/// The largest centred area with the picture's aspect ratio, at least one pixel in each direction.
/// All sizes are at least 1.
FittedArea fittedArea(std::size_t width, std::size_t height, std::size_t frameWidth,
                      std::size_t frameHeight);

/// Scales pictures of any size to one size: aspect kept, centred on black, with the Catmull-Rom
/// cubic on the sRGB values (see `resampling.h`). One thread.
class PictureFitter {
public:
    PictureFitter(std::size_t frameWidth, std::size_t frameHeight)
        : frameWidth_(frameWidth), frameHeight_(frameHeight) {}

    /// Returns the picture itself if it already has the size, otherwise one that is valid until the
    /// next call. Neither side of the picture is 0.
    PictureView fit(const PictureView& picture);

private:
    void prepare(const PictureView& picture);

    std::size_t frameWidth_;
    std::size_t frameHeight_;

    // For the size of the last picture, because consecutive frames usually have the same size.
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    FittedArea area_;
    std::optional<RowResampler> resampler_;
    std::vector<std::uint8_t> frame_; // black outside the area
};

} // namespace vistrane
