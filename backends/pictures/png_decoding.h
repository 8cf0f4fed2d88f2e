#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// The decode step of reading: the pixels of a PNG file, of which `header` is what `readPngHeader`
/// has said. Returns what is wrong with the pixel data, if anything is.
///
/// Values are expanded to 8 bits as libpng does it: fewer bits are spread over the whole range, 16
/// bits are rounded to the nearest value (its "scale", not its "strip"). They are the file's own
/// values: neither gamma nor a profile is applied. For the rows see `PictureSource::readPixels`.
///
/// The header step has tested the chunks' checksums: this step tests the pixel data's own.
///
/// The usual forms of file are decoded here, anything else by libpng, which also has the last word
/// on a file that seems to be damaged.
std::optional<std::string> decodePng(std::span<const std::uint8_t> file, const PngHeader& header,
                                     PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride);

/// The part of `decodePng` that is done without libpng. True if the file is whole and of a usual
/// form; then the rows are what libpng makes of it.
bool decodeUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                    std::uint8_t* rows, std::ptrdiff_t stride);

/// The same, handing on one row after the other. After false those that came do not count.
bool passUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                  PictureRows& rows);

} // namespace vistrane
