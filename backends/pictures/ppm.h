#pragma once

#include <cstdint>
#include <string>

namespace vistrane {

/// The head of a binary PPM file ("P6", 8 bits a component). The pixels follow it: the top row
/// first, red, green, blue, no gaps. `Pictures::imageWithData` reads such files, whose comments
/// may stand wherever the format allows them; they end with the last pixel.
std::string ppmHead(std::uint32_t width, std::uint32_t height);

} // namespace vistrane
