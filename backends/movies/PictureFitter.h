#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "backends/movies/color_conversion.h"

namespace vistrane {

/// Where a picture comes to lie inside a frame of another size.
struct FittedArea {
    std::size_t x = 0;
    std::size_t y = 0;
    std::size_t width = 0;
    std::size_t height = 0;
    bool operator==(const FittedArea&) const = default;
};

/// The largest area of the picture's aspect ratio in the middle of the frame, at least one pixel
/// in either direction. All sizes are at least 1.
FittedArea fittedArea(std::size_t width, std::size_t height, std::size_t frameWidth,
                      std::size_t frameHeight);

/// Brings pictures of any size to one size: aspect kept, centred on black.
///
/// Filters with the Catmull-Rom cubic (Keys 1981, a = -1/2) over the picture's values as they
/// are, widened by the ratio when the picture shrinks, so that fine detail does not alias; beyond
/// an edge the edge repeats. One thread.
class PictureFitter {
public:
    PictureFitter(std::size_t frameWidth, std::size_t frameHeight)
        : frameWidth_(frameWidth), frameHeight_(frameHeight) {}

    /// The picture itself when it has the size already; else one that is valid until the next
    /// call. Neither side of the picture is 0.
    PictureView fit(const PictureView& picture);

private:
    /// For each target position: the first source position, and the weights from there on.
    struct Filter {
        std::size_t taps = 0;
        std::vector<std::size_t> first;
        std::vector<float> weights; // taps for each target position; each group's sum is 1
    };

    static Filter makeFilter(std::size_t from, std::size_t to);

    void prepare(const PictureView& picture);
    void filterRow(const std::uint8_t* pixels, float* row) const;
    void blendRows(std::size_t y);

    std::size_t frameWidth_;
    std::size_t frameHeight_;

    // For the size of the last picture: neighbouring frames mostly agree in it.
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    FittedArea area_;
    Filter across_;
    Filter down_;

    std::vector<std::uint8_t> frame_; // black around the area
    std::vector<float> rows_;         // the filtered rows that the current target row needs
    std::vector<float> blend_;
};

} // namespace vistrane
