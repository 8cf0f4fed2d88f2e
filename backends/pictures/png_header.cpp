#include "backends/pictures/png_header.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace vistrane {

namespace {

/// Length, type and checksum.
constexpr std::size_t chunkFrame = 12;
/// The format's limit for four-byte numbers.
constexpr std::uint32_t largestNumber = 0x7FFFFFFF;

std::uint32_t number(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

struct Chunk {
    std::string_view type;
    std::span<const std::uint8_t> data;
    /// The position of its length field in the file.
    std::size_t offset = 0;
    bool hasRightChecksum = true;

    bool isCritical() const { return (static_cast<unsigned char>(type[0]) & 0x20U) == 0; }
};

PngRefusal damaged(const std::string& how) {
    return {PictureFault::Damaged, "is damaged (" + how + "); make or copy it again, or remove it"};
}

constexpr char cutOff[] = "its end is missing";

std::string wrongChecksum(const Chunk& chunk) {
    return "the checksum of " + std::string(chunk.type) + " is wrong";
}

bool isChunkType(std::string_view type) {
    return std::all_of(type.begin(), type.end(), [](char letter) {
        return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
    });
}

bool checksumFits(std::span<const std::uint8_t> typeAndData, std::uint32_t checksum) {
    return ::libdeflate_crc32(0, typeAndData.data(), typeAndData.size()) == checksum;
}

/// The chunk, or why there is none.
std::variant<Chunk, std::string> chunkAt(std::span<const std::uint8_t> file, std::size_t offset) {
    const auto rest = file.subspan(offset);
    if (rest.size() < chunkFrame) {
        return cutOff;
    }
    const std::uint32_t length = number(rest.data());
    const std::string_view type(reinterpret_cast<const char*>(rest.data()) + 4, 4);
    if (length > largestNumber || !isChunkType(type)) {
        return "a chunk has no valid header";
    }
    if (rest.size() - chunkFrame < length) {
        return cutOff;
    }
    return Chunk{type, rest.subspan(8, length), offset,
                 checksumFits(rest.subspan(4, 4 + length), number(rest.data() + 8 + length))};
}

bool isColourForm(std::uint8_t colour, std::uint8_t depth) {
    switch (colour) {
    case 0:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6:
        return depth == 8 || depth == 16;
    default:
        return false;
    }
}

std::optional<PngRefusal> readSizeAndForm(const Chunk& chunk, const PictureLimits& limits,
                                          PngHeader& header) {
    if (chunk.type != "IHDR" || chunk.data.size() != 13) {
        return damaged("its header is missing");
    }
    const std::uint8_t* data = chunk.data.data();
    header.width = number(data);
    header.height = number(data + 4);
    const std::uint8_t colour = data[9];
    header.bitDepth = data[8];
    if (header.width == 0 || header.height == 0 || header.width > largestNumber ||
        header.height > largestNumber || !isColourForm(colour, header.bitDepth) || data[10] != 0 ||
        data[11] != 0 || data[12] > 1) {
        return damaged("its size or pixel format is not valid");
    }
    header.colour = static_cast<PngColour>(colour);
    header.interlaced = data[12] == 1;
    if (!limits.allows(header.width, header.height)) {
        return PngRefusal{PictureFault::TooLarge, "is too large (" + std::to_string(header.width) +
                                                      " x " + std::to_string(header.height) +
                                                      " pixels); make it smaller or remove it"};
    }
    return std::nullopt;
}

std::uint64_t bitsPerPixel(const PngHeader& header) {
    constexpr std::array<std::uint64_t, 7> components = {1, 0, 3, 1, 2, 0, 4};
    return components[static_cast<std::size_t>(header.colour)] * header.bitDepth;
}

/// Deflate expands a byte to at most 1032 bytes. A file that claims more pixels than its data can
/// hold is refused before memory is allocated for them.
bool canHoldPixels(const PngHeader& header) {
    const std::uint64_t pixelBytes =
        static_cast<std::uint64_t>(header.width) * header.height * bitsPerPixel(header) / 8;
    return pixelBytes / 1032 <= header.imageBytes;
}

/// Reads the chunks in order.
class HeaderReading {
public:
    HeaderReading(std::span<const std::uint8_t> file, const PictureLimits& limits)
        : file_(file), limits_(limits) {}

    std::variant<PngHeader, PngRefusal> read() {
        if (file_.size() < pngSignature.size() ||
            !std::equal(pngSignature.begin(), pngSignature.end(), file_.begin())) {
            return PngRefusal{PictureFault::NotAPicture, file_.empty() ? "is empty; remove it"
                                                                       : "is not a PNG file; "
                                                                         "convert or remove it"};
        }
        std::size_t offset = pngSignature.size();
        while (!ended_) {
            const auto found = chunkAt(file_, offset);
            ++header_.chunksVisited;
            if (const auto* fault = std::get_if<std::string>(&found)) {
                if (!hasPixels()) {
                    return damaged(*fault);
                }
                endWithFlaw(*fault);
                break;
            }
            const Chunk& chunk = std::get<Chunk>(found);
            const auto refusal = chunk.hasRightChecksum ? take(chunk) : takeDamaged(chunk);
            if (refusal) {
                return *refusal;
            }
            offset += chunkFrame + chunk.data.size();
        }
        if (!canHoldPixels(header_)) {
            return damaged("it has too little data for its size");
        }
        return header_;
    }

private:
    bool hasPixels() const { return header_.imageChunks.length > 0; }

    void addFlaw(const std::string& flaw) {
        if (header_.flaw.empty()) {
            header_.flaw = flaw;
        }
    }

    void endWithFlaw(const std::string& flaw) {
        addFlaw(flaw);
        ended_ = true;
    }

    std::optional<PngRefusal> takeDamaged(const Chunk& chunk) {
        if (hasPixels() && chunk.type == "IEND") {
            endWithFlaw(wrongChecksum(chunk));
        } else if (chunk.isCritical() || chunk.offset == pngSignature.size()) {
            return damaged(wrongChecksum(chunk));
        } else {
            addFlaw(wrongChecksum(chunk));
        }
        return std::nullopt;
    }

    std::optional<PngRefusal> take(const Chunk& chunk) {
        if (chunk.offset == pngSignature.size()) {
            return readSizeAndForm(chunk, limits_, header_);
        }
        if (chunk.type == "IDAT") {
            return takeImageData(chunk);
        }
        if (chunk.type == "IEND") {
            ended_ = true;
            const bool whole = hasPixels() && chunk.data.empty();
            return whole ? std::nullopt : std::optional(damaged("it has no pixels"));
        }
        if (chunk.type == "PLTE") {
            return takePalette(chunk);
        }
        if (chunk.isCritical()) {
            return damaged("it has an unknown critical chunk " + std::string(chunk.type));
        }
        if (!hasPixels()) {
            takeAncillary(chunk);
        }
        return std::nullopt;
    }

    std::optional<PngRefusal> takeImageData(const Chunk& chunk) {
        ByteRange& range = header_.imageChunks;
        if (header_.colour == PngColour::Palette && !hasPalette_) {
            return damaged("it has no palette");
        }
        if (range.length > 0 && range.offset + range.length != chunk.offset) {
            return damaged("its IDAT chunks are not consecutive");
        }
        if (range.length == 0) {
            range.offset = chunk.offset;
        }
        range.length += chunkFrame + chunk.data.size();
        header_.imageBytes += chunk.data.size();
        header_.longestImageChunk = std::max(header_.longestImageChunk, chunk.data.size());
        return std::nullopt;
    }

    std::optional<PngRefusal> takePalette(const Chunk& chunk) {
        const std::size_t length = chunk.data.size();
        const bool fits = length >= 3 && length <= 768 && length % 3 == 0;
        if (header_.colour == PngColour::Palette && (!fits || hasPalette_ || hasPixels())) {
            return damaged("its palette is not valid");
        }
        if (hasPalette_ || hasPixels() || header_.hasTransparencyChunk ||
            header_.colour != PngColour::Palette) {
            header_.hasPlainColours = false;
        }
        header_.palette = rangeOf(chunk);
        hasPalette_ = true;
        return std::nullopt;
    }

    void takeAncillary(const Chunk& chunk) {
        if (chunk.type == "tRNS") {
            takeTransparency(chunk);
        } else if (chunk.type == "pHYs" && chunk.data.size() == 9 && chunk.data[8] == 1) {
            const PixelDensity density{number(chunk.data.data()), number(chunk.data.data() + 4)};
            const bool valid = density.x != 0 && density.y != 0 && density.x <= largestNumber &&
                               density.y <= largestNumber;
            header_.density = valid ? std::optional(density) : std::nullopt;
        } else if (chunk.type == "iCCP") {
            header_.profile = rangeOf(chunk);
        }
    }

    void takeTransparency(const Chunk& chunk) {
        if (header_.hasTransparencyChunk) {
            header_.hasPlainColours = false;
        }
        header_.transparency = rangeOf(chunk);
        header_.hasTransparencyChunk = true;
    }

    static ByteRange rangeOf(const Chunk& chunk) { return {chunk.offset + 8, chunk.data.size()}; }

    std::span<const std::uint8_t> file_;
    const PictureLimits& limits_;
    PngHeader header_;
    bool hasPalette_ = false;
    bool ended_ = false;
};

} // namespace

std::variant<PngHeader, PngRefusal> readPngHeader(std::span<const std::uint8_t> file,
                                                  const PictureLimits& limits) {
    return HeaderReading(file, limits).read();
}

} // namespace vistrane
