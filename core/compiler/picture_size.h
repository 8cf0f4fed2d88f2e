#pragma once

#include <cstdint>
#include <memory>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// A picture's size in points, each side truncated toward zero; zero for a missing picture.
struct PictureSize {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    bool operator==(const PictureSize&) const = default;
};

PictureSize truncatedSize(const std::shared_ptr<NSImage>& image);

} // namespace vistrane
