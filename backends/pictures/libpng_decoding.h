#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// What `decodePng` does, by libpng alone. It has the last word: on rare forms, on damaged files,
/// and in the tests.
std::optional<std::string> decodeByLibpng(std::span<const std::uint8_t> file,
                                          const PngHeader& header, PixelForm form,
                                          std::uint8_t* rows, std::ptrdiff_t stride);

} // namespace vistrane
