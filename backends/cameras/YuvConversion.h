#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/cameras/gst_pointers.h"

namespace vistrane {

/// Converts 8-bit Y'CbCr to full-range RGB with the matrix and the range of a picture's
/// colorimetry (ITU-R BT.601, BT.709, BT.2020 and others that GStreamer names), to the nearest
/// level.
///
/// GStreamer's own conversion of 8-bit pictures is up to 4 levels off: white of limited range
/// becomes 253.
class YuvConversion {
public:
    /// For AYUV pictures of that colorimetry. Nothing if it names no Y'CbCr matrix.
    static std::optional<YuvConversion> of(const GstVideoColorimetry& colorimetry);

    /// `count` pixels of AYUV, to three bytes each: red, green, blue.
    void toRgb(const std::uint8_t* ayuv, std::size_t count, std::uint8_t* rgb) const;
    /// The same to four bytes: blue, green, red, one ignored. In place as well.
    void toBgrx(const std::uint8_t* ayuv, std::size_t count, std::uint8_t* bgrx) const;

private:
    struct Pixel {
        std::uint8_t red, green, blue;
    };
    Pixel pixel(const std::uint8_t* ayuv) const;

    // In units of 1/65536 of a level.
    std::int32_t luma_ = 0;
    std::int32_t redOfV_ = 0;
    std::int32_t greenOfU_ = 0;
    std::int32_t greenOfV_ = 0;
    std::int32_t blueOfU_ = 0;
    std::int32_t black_ = 0; // the level of Y'
};

} // namespace vistrane
