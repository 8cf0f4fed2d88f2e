#pragma once

#include <cstdint>

namespace vistrane {

/// The largest accepted sizes, checked before memory is allocated.
struct PictureLimits {
    /// In pixels.
    std::uint32_t largestSide = 32768;
    /// Width times height; 1 GiB at 4 bytes per pixel.
    std::uint64_t mostPixels = 256ULL * 1024 * 1024;
    /// In bytes.
    std::uint64_t largestFile = 1024ULL * 1024 * 1024;

    bool allows(std::uint64_t width, std::uint64_t height) const {
        return width >= 1 && height >= 1 && width <= largestSide && height <= largestSide &&
               width * height <= mostPixels;
    }
};

} // namespace vistrane
