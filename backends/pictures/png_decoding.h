#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// The second step of reading: decodes the pixels of a PNG file, whose `header` is from
/// `readPngHeader`. Returns what is wrong with the pixel data, if anything.
///
/// Values are converted to 8 bits like in libpng: fewer bits are scaled to the whole range, 16 bits
/// are rounded to the nearest value (its "scale", not its "strip"). Neither gamma nor a profile is
/// applied. For the rows see `PictureSource::readPixels`.
///
/// `readPngHeader` has checked the checksums of the chunks; this step checks that of the pixel
/// data.
///
/// `decodeUsualPng` decodes the usual kinds of file. libpng decodes the others, and decides about
/// files that seem to be damaged.
std::optional<std::string> decodePng(std::span<const std::uint8_t> file, const PngHeader& header,
                                     PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride);

/// Decodes without libpng. Returns true if the file is intact and of a usual kind; the rows are
/// then identical to libpng's. After false the rows are undefined.
///
/// Decompresses, unfilters and expands a frame in parts that stay in the caches: loading takes 0.2
/// to 0.4 of libpng's time (rows `load-*-libpng` of bench/RESULTS.md). Hostile files, made of empty
/// blocks or chunks, take at most ten times libpng's time (rows `hostile`).
bool decodeUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                    std::uint8_t* rows, std::ptrdiff_t stride);

/// The same, but passes the rows one by one. After false the passed rows are undefined.
bool passUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                  PictureRows& rows);

} // namespace vistrane
