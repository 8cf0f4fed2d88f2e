#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// `decodePng` by libpng alone: the reference implementation, which also decodes the rarer forms
/// and decides about files that seem to be damaged.
std::optional<std::string> decodeByLibpng(std::span<const std::uint8_t> file,
                                          const PngHeader& header, PixelForm form,
                                          std::uint8_t* rows, std::ptrdiff_t stride);

} // namespace vistrane
