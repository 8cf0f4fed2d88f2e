#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/picture_errors.h"

namespace vistrane {

/// How every PNG file begins.
inline constexpr std::array<std::uint8_t, 8> pngSignature = {0x89, 'P',  'N',  'G',
                                                             '\r', '\n', 0x1A, '\n'};

/// A part of a file.
struct ByteRange {
    std::size_t offset = 0;
    std::size_t length = 0;
};

/// Colour types of a PNG file: the sum of 1 palette, 2 colour, 4 alpha.
enum class PngColour : std::uint8_t { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, RgbAlpha = 6 };

/// Everything that the chunks of a PNG file say, except the pixels.
struct PngHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t bitDepth = 8;
    PngColour colour = PngColour::Rgb;
    bool interlaced = false;
    bool hasTransparencyChunk = false;
    /// Set only if the unit is the metre. Zero in either direction counts as absent.
    std::optional<PixelDensity> density;
    /// The data of an iCCP chunk.
    std::optional<ByteRange> profile;
    /// The data of the PLTE and tRNS chunks before the pixels, if there are any.
    ByteRange palette;
    ByteRange transparency;
    /// Whether these two are where the format requires them and occur at most once. Decoders
    /// disagree about other files.
    bool hasPlainColours = true;
    /// The IDAT chunks, which are contiguous, and the total length of their data.
    ByteRange imageChunks;
    std::size_t imageBytes = 0;
    /// The data length of the longest of them.
    std::size_t longestImageChunk = 0;
    /// How many chunks were read. For tests that count work.
    std::size_t chunksVisited = 0;
    /// What is damaged although the pixels may be whole; empty if nothing is.
    std::string flaw;

    bool hasAlpha() const {
        return hasTransparencyChunk || colour == PngColour::GreyAlpha ||
               colour == PngColour::RgbAlpha;
    }
    bool isGrey() const { return colour == PngColour::Grey || colour == PngColour::GreyAlpha; }
};

/// Why a file is refused; `what` continues "the picture <name> ".
struct PngRefusal {
    PictureFault fault = PictureFault::NotAPicture;
    std::string what;
};

/// The first step of reading: allocates nothing for pixels and decodes nothing.
///
/// Checks the signature, the IHDR fields, the limits, each chunk's place, length and checksum up
/// to the end chunk, and that the image data can hold that many pixels at all. So a file that is
/// truncated in its pixels, or has a wrong bit in a chunk that they need, is refused here unless
/// its checksums are right. Bytes after the end chunk do not matter.
///
/// An ancillary chunk with a wrong checksum is skipped, and damage after the last chunk of image
/// data ends the reading. Both are a `flaw`: only decoding tells whether the pixels are whole.
std::variant<PngHeader, PngRefusal> readPngHeader(std::span<const std::uint8_t> file,
                                                  const PictureLimits& limits);

} // namespace vistrane
