#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vistrane::testing {

using Bytes = std::vector<std::uint8_t>;

/// A form of PNG file; `colour` and `depth` are the numbers that stand in the file.
struct PngForm {
    int colour = 2;
    int depth = 8;
    bool interlaced = false;
    /// A tRNS chunk; not with the colours that have alpha of their own.
    bool transparency = false;

    std::string text() const;
};

/// All that there are: each colour with each depth it may have, with and without the rest.
std::vector<PngForm> allPngForms();

/// A PNG file written by libpng, and the pixels that it stands for: RGBA, 8 bits, reckoned here
/// from the values that were handed to libpng.
struct PngSample {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Bytes file;
    Bytes rgba;
};

/// A picture of random values; the same `seed` gives the same picture.
PngSample randomPng(const PngForm& form, std::uint32_t width, std::uint32_t height,
                    unsigned seed = 1);

/// An 8 bit RGBA picture (RGB when every alpha is 255) of the given pixels.
PngSample pngOf(std::uint32_t width, std::uint32_t height,
                const std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>& rgba);

/// A chunk with its frame.
Bytes chunk(const std::string& type, std::span<const std::uint8_t> data);

struct ChunkPlace {
    std::string type;
    /// Of the length field.
    std::size_t offset = 0;
    std::size_t dataLength = 0;
};
std::vector<ChunkPlace> chunksOf(std::span<const std::uint8_t> file);

/// The file with one more chunk before the first one of that type.
Bytes withChunkBefore(const Bytes& file, const std::string& type, const Bytes& added);
/// The file with pHYs.
Bytes withDensity(const Bytes& file, std::uint32_t x, std::uint32_t y, std::uint8_t unit = 1);
/// The file with each IDAT split into chunks of that many bytes and an empty one in front.
Bytes withSplitData(const Bytes& file, std::size_t length);
/// The file with the checksums that its chunks should have, as far as it has chunks.
Bytes withRightChecksums(Bytes file);

/// What a plain use of libpng makes of a file: RGBA, 16 bits scaled to 8; nothing when it refuses.
std::optional<PngSample> readByLibpng(std::span<const std::uint8_t> file);

} // namespace vistrane::testing
