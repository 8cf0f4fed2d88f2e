#pragma once

#include <cstdint>

namespace vistrane {

/// What a picture may claim to be before memory is taken for it.
struct PictureLimits {
    /// Pixels in either direction.
    std::uint32_t largestSide = 32768;
    /// Pixels in all: at 4 bytes each this is 1 GiB.
    std::uint64_t mostPixels = 256ULL * 1024 * 1024;
    /// Bytes of a picture file.
    std::uint64_t largestFile = 1024ULL * 1024 * 1024;

    bool allows(std::uint64_t width, std::uint64_t height) const {
        return width >= 1 && height >= 1 && width <= largestSide && height <= largestSide &&
               width * height <= mostPixels;
    }
};

} // namespace vistrane
