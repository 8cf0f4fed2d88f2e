#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace vistrane::testing {

using Bytes = std::vector<std::uint8_t>;

/// A number from 0 up to, not including, `limit`; 0 when that is 0.
std::uint32_t below(std::mt19937& random, std::size_t limit);
Bytes randomBytes(std::mt19937& random, std::size_t length);

void append(Bytes& bytes, std::span<const std::uint8_t> more);
/// In the byte order of PNG files, highest first.
void appendNumber(Bytes& bytes, std::uint32_t number);

/// A form of PNG file; `colour` and `depth` are the numbers in the file.
struct PngForm {
    int colour = 2;
    int depth = 8;
    bool interlaced = false;
    /// With a tRNS chunk; not for colours that have alpha of their own.
    bool transparency = false;

    std::size_t components() const;
    /// The length of an unpacked row with its filter.
    std::size_t rowBytes(std::uint32_t width) const;
    std::string text() const;
};

/// Each colour with each depth it may have, with and without interlacing and tRNS.
std::vector<PngForm> allPngForms();

/// A PNG file written by libpng and its pixels: RGBA, 8 bits, computed here from the values that
/// were passed to libpng.
struct PngSample {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Bytes file;
    Bytes rgba;
    /// Whether libpng warned while it read the file.
    bool warned = false;
};

/// A picture of random values; the same `seed` gives the same picture.
PngSample randomPng(const PngForm& form, std::uint32_t width, std::uint32_t height,
                    unsigned seed = 1);

/// A picture of the given pixels, 8 bit RGBA, or RGB when every alpha is 255.
PngSample pngOf(std::uint32_t width, std::uint32_t height,
                const std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>& rgba);

/// A chunk: length, type, data, checksum.
Bytes chunk(const std::string& type, std::span<const std::uint8_t> data);

struct ChunkPlace {
    std::string type;
    /// Of the chunk's length field.
    std::size_t offset = 0;
    std::size_t dataLength = 0;
};
std::vector<ChunkPlace> chunksOf(std::span<const std::uint8_t> file);

/// A file around the data of its IDAT chunks, neither interlaced nor with tRNS.
Bytes pngAround(const PngForm& form, std::uint32_t width, std::uint32_t height,
                std::span<const Bytes> imageData);

/// The file with one more chunk before the first one of that type.
Bytes withChunkBefore(const Bytes& file, const std::string& type, const Bytes& added);
/// The file with a pHYs chunk.
Bytes withDensity(const Bytes& file, std::uint32_t x, std::uint32_t y, std::uint8_t unit = 1);
/// The file with each IDAT chunk split into an empty one and others of that many bytes.
Bytes withSplitData(const Bytes& file, std::size_t length);
/// The file with the right checksums, up to the first byte that is no chunk.
Bytes withRightChecksums(Bytes file);
/// The file with a wrong byte in the data of its IDAT chunk, that many before the end, under right
/// checksums. The last four are the checksum of the pixel stream.
Bytes withDamagedPixels(Bytes file, std::size_t fromEnd);

/// A file as a plain use of libpng reads it: RGBA, 16 bits scaled to 8. Nothing when it
/// refuses the file, or when a side is longer than 4096.
std::optional<PngSample> readByLibpng(std::span<const std::uint8_t> file);

} // namespace vistrane::testing
