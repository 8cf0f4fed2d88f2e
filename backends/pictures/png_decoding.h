#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// The decoding step of reading: the pixels of a PNG file, whose `header` is from `readPngHeader`.
/// Returns what is wrong with the pixel data, if anything.
///
/// Values are expanded to 8 bits as libpng does it: fewer bits are spread over the whole range, 16
/// bits are rounded to the nearest value (its "scale", not its "strip"). Neither gamma nor a
/// profile is applied. For the rows see `PictureSource::readPixels`.
///
/// `readPngHeader` has checked the checksums of the chunks; this step checks that of the pixel
/// data.
///
/// The usual forms are decoded by `decodeUsualPng`, anything else by libpng, which also decides
/// about files that seem to be damaged.
std::optional<std::string> decodePng(std::span<const std::uint8_t> file, const PngHeader& header,
                                     PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride);

/// Decodes without libpng. True if the file is whole and of a usual form; then the rows are those
/// of libpng. False leaves the rows undefined.
///
/// A frame is decompressed, unfiltered and expanded in parts that stay in the caches: loading takes
/// 0.2 to 0.4 of libpng's time (rows `load-*-libpng` of bench/RESULTS.md). Hostile files, of empty
/// blocks or chunks, take at most ten times libpng's time (rows `hostile`).
bool decodeUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                    std::uint8_t* rows, std::ptrdiff_t stride);

/// The same, passing one row after the other. After false the rows passed are undefined.
bool passUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                  PictureRows& rows);

} // namespace vistrane
