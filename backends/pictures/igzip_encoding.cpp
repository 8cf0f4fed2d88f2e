#include "backends/pictures/igzip_encoding.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "backends/pictures/LiteralBlock.h"
#include "backends/pictures/PictureLimits.h"
#include "backends/pictures/png_filters.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

namespace {

/// The approximate size of the slabs that are filtered at a time, and of the IDAT chunks. Both fit
/// into the caches.
constexpr std::size_t slab = std::size_t{128} * 1024;

/// The level with the shortest search for matches. Its files are still smaller than those of zlib
/// at level 1: the matches that it misses in noise are not worth their codes.
constexpr std::uint32_t level = 1;
constexpr std::size_t levelMemory = ISAL_DEF_LVL1_LARGE;

constexpr std::size_t chunkHeader = 8;
constexpr std::size_t chunkChecksum = 4;
constexpr std::uint8_t perMetre = 1;
constexpr std::uint8_t perceptual = 0;

void putNumber(std::uint8_t* bytes, std::size_t number) {
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    }
}

/// Adds length, type and checksum to a chunk that already contains its data.
void frameChunk(std::uint8_t* chunk, const char* type, std::size_t length) {
    putNumber(chunk, length);
    std::memcpy(chunk + 4, type, 4);
    putNumber(chunk + chunkHeader + length, ::libdeflate_crc32(0, chunk + 4, 4 + length));
}

template <std::size_t Length>
bool appendChunk(ByteArray& file, const char* type, const std::array<std::uint8_t, Length>& data) {
    std::array<std::uint8_t, chunkHeader + Length + chunkChecksum> chunk{};
    std::copy(data.begin(), data.end(), chunk.begin() + chunkHeader);
    frameChunk(chunk.data(), type, Length);
    return file.append(chunk);
}

bool appendHeader(ByteArray& file, const PictureShape& shape) {
    constexpr std::uint8_t colour = 2;
    constexpr std::uint8_t colourAndAlpha = 6;
    std::array<std::uint8_t, 13> size{};
    putNumber(size.data(), shape.width);
    putNumber(size.data() + 4, shape.height);
    size[8] = 8;
    size[9] = shape.mayBeTransparent ? colourAndAlpha : colour;
    if (!file.append(pngSignature) || !appendChunk(file, "IHDR", size) ||
        !appendChunk<1>(file, "sRGB", {perceptual})) {
        return false;
    }
    if (!shape.density) {
        return true;
    }
    std::array<std::uint8_t, 9> density{};
    putNumber(density.data(), shape.density->x);
    putNumber(density.data() + 4, shape.density->y);
    density[8] = perMetre;
    return appendChunk(file, "pHYs", density);
}

/// Many zero words mean that the row equals the one above. Matches then take less than a bit per
/// byte.
bool hasManyZeros(std::span<const std::uint8_t> bytes) {
    const std::size_t words = bytes.size() / sizeof(std::uint64_t);
    std::size_t zeros = 0;
    for (std::size_t i = 0; i < words; ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i * sizeof word, sizeof word);
        zeros += word == 0 ? 1 : 0;
    }
    return zeros > words / 16;
}

/// An igzip stream, without header and checksum, and its memory.
class Deflation {
public:
    /// Returns false if there is not enough memory.
    bool begin() {
        stream_.reset(new (std::nothrow) isal_zstream);
        auto memory = ByteArray::ofLength(levelMemory);
        if (!stream_ || !memory) {
            return false;
        }
        memory_ = std::move(*memory);
        ::isal_deflate_init(stream_.get());
        stream_->level = level;
        stream_->level_buf = memory_.data();
        stream_->level_buf_size = static_cast<std::uint32_t>(memory_.length());
        stream_->gzip_flag = IGZIP_DEFLATE;
        return true;
    }

    /// Begins a new stream.
    void reset() { ::isal_deflate_reset(stream_.get()); }

    void give(std::span<std::uint8_t> bytes, std::uint16_t flush, bool last) {
        stream_->next_in = bytes.data();
        stream_->avail_in = static_cast<std::uint32_t>(bytes.size());
        stream_->flush = flush;
        stream_->end_of_stream = last ? 1 : 0;
    }

    /// Compresses the given bytes. Returns the number of bytes written; nothing after an error.
    std::optional<std::size_t> make(std::span<std::uint8_t> room) {
        stream_->next_out = room.data();
        stream_->avail_out = static_cast<std::uint32_t>(room.size());
        if (::isal_deflate(stream_.get()) != COMP_OK) {
            return std::nullopt;
        }
        return room.size() - stream_->avail_out;
    }

    /// Whether `make` must be called again.
    bool isWaiting() const {
        return stream_->avail_in > 0 || stream_->avail_out == 0 ||
               (stream_->end_of_stream != 0 && stream_->internal_state.state != ZSTATE_END);
    }

private:
    std::unique_ptr<isal_zstream> stream_;
    ByteArray memory_;
};

/// Compresses bytes into IDAT chunks: each slab by igzip, or as a literal block if matches would
/// hardly make it smaller.
class PixelChunks {
public:
    explicit PixelChunks(ByteArray& file) : file_(file) {}

    /// Returns false if there is not enough memory, like the functions below.
    bool begin() {
        auto chunk = ByteArray::ofLength(chunkHeader + chunkRoom + chunkChecksum);
        auto piece = ByteArray::ofLength(2 * pieceLength);
        if (!deflation_.begin() || !trial_.begin() || !chunk || !piece) {
            return false;
        }
        chunk_ = std::move(*chunk);
        piece_ = std::move(*piece);
        return put(zlibHeader);
    }

    /// Adds up to a slab of bytes.
    bool add(std::span<std::uint8_t> bytes, bool last) {
        checksum_ = ::libdeflate_adler32(checksum_, bytes.data(), bytes.size());
        const bool added = addSmallest(bytes, last);
        if (!added || !last) {
            return added;
        }
        std::array<std::uint8_t, 4> checksum{};
        putNumber(checksum.data(), checksum_);
        return put(checksum) && endChunk();
    }

private:
    static constexpr std::array<std::uint8_t, 2> zlibHeader = {0x78, 0x01};
    static constexpr std::size_t pieceLength = std::size_t{8} * 1024;
    /// A slab of literals, and what may precede and follow it in its chunk.
    static constexpr std::size_t chunkRoom = slab + std::size_t{2} * 1024;
    // A slab has at least one row. Its literals take at most 0.1 % more than the row, plus a
    // header.
    static constexpr std::size_t longestRow =
        1 + bytesPerPixel(PixelForm::RGBA) * PictureLimits().largestSide;
    static_assert(longestRow + longestRow / 1000 + 1024 <= chunkRoom);

    bool addSmallest(std::span<std::uint8_t> bytes, bool last) {
        if (hasManyZeros(bytes)) {
            return addMatches(bytes, last);
        }
        const LiteralBlock block(bytes);
        return matchesHelp(bytes, block) ? addMatches(bytes, last) : addLiterals(block, last);
    }

    /// Compares the compressed sizes of two pieces of the slab.
    bool matchesHelp(std::span<std::uint8_t> bytes, const LiteralBlock& block) {
        const std::size_t length = std::min(pieceLength, bytes.size() / 2);
        std::size_t literals = 0;
        std::size_t matches = 0;
        for (const std::size_t at : {bytes.size() / 4, bytes.size() / 4 * 3}) {
            const std::span<std::uint8_t> piece =
                bytes.subspan(std::min(at, bytes.size() - length), length);
            literals += block.bitsOf(piece);
            matches += 8 * lengthOfMatches(piece);
        }
        // Literals decode in half the time, which is worth a few bytes more.
        return matches + matches / 32 < literals;
    }

    std::size_t lengthOfMatches(std::span<std::uint8_t> piece) {
        trial_.reset();
        trial_.give(piece, NO_FLUSH, true);
        std::size_t length = 0;
        do {
            const auto made = trial_.make({piece_.data(), piece_.length()});
            if (!made) {
                break;
            }
            length += *made;
        } while (trial_.isWaiting());
        return length;
    }

    bool addMatches(std::span<std::uint8_t> bytes, bool last) {
        hasMatches_ = true;
        return deflate(bytes, NO_FLUSH, last);
    }

    bool addLiterals(const LiteralBlock& block, bool last) {
        if (hasMatches_) {
            // Later matches must not refer to bytes that igzip has not seen.
            if (!deflate({}, SYNC_FLUSH, false)) {
                return false;
            }
            deflation_.reset();
            hasMatches_ = false;
        }
        if (used_ > 0 && used_ + block.room() > chunkRoom && !endChunk()) {
            return false;
        }
        std::uint8_t* const to = chunk_.data() + chunkHeader + used_;
        used_ += static_cast<std::size_t>(block.write(to, last) - to);
        // `Inflation` decodes two such chunks at a time.
        return last || endChunk();
    }

    bool deflate(std::span<std::uint8_t> bytes, std::uint16_t flush, bool last) {
        deflation_.give(bytes, flush, last);
        do {
            if (used_ == chunkRoom && !endChunk()) {
                return false;
            }
            const auto made =
                deflation_.make({chunk_.data() + chunkHeader + used_, chunkRoom - used_});
            if (!made) {
                return false;
            }
            used_ += *made;
        } while (deflation_.isWaiting());
        return true;
    }

    bool put(std::span<const std::uint8_t> bytes) {
        if (used_ + bytes.size() > chunkRoom && !endChunk()) {
            return false;
        }
        std::copy(bytes.begin(), bytes.end(), chunk_.data() + chunkHeader + used_);
        used_ += bytes.size();
        return true;
    }

    bool endChunk() {
        frameChunk(chunk_.data(), "IDAT", used_);
        return file_.append(
            chunk_.bytes().first(chunkHeader + std::exchange(used_, 0) + chunkChecksum));
    }

    ByteArray& file_;
    Deflation deflation_;
    Deflation trial_;
    ByteArray chunk_;
    std::size_t used_ = 0; // of the current chunk
    ByteArray piece_;
    std::uint32_t checksum_ = 1;
    bool hasMatches_ = false;
};

bool appendPixels(ByteArray& file, const PictureShape& shape, const std::uint8_t* rows,
                  std::size_t stride) {
    const std::size_t length =
        bytesPerPixel(shape.mayBeTransparent ? PixelForm::RGBA : PixelForm::RGB) * shape.width;
    const std::size_t rowsAtOnce = std::clamp<std::size_t>(slab / (length + 1), 1, shape.height);
    auto filtered = ByteArray::ofLength(rowsAtOnce * (length + 1));
    PixelChunks chunks(file);
    if (!filtered || !chunks.begin()) {
        return false;
    }
    for (std::size_t y = 0; y < shape.height; y += rowsAtOnce) {
        const std::size_t end = std::min<std::size_t>(y + rowsAtOnce, shape.height);
        std::uint8_t* to = filtered->data();
        for (std::size_t i = y; i < end; ++i) {
            const std::uint8_t* row = rows + i * stride;
            filterRowUp(row, i > 0 ? row - stride : nullptr, to, length);
            to += length + 1;
        }
        if (!chunks.add({filtered->data(), to}, end == shape.height)) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<ByteArray> encodeByIgzip(const PictureShape& shape, const std::uint8_t* rows,
                                       std::size_t stride) {
    ByteArray file;
    const bool whole = appendHeader(file, shape) && appendPixels(file, shape, rows, stride) &&
                       appendChunk<0>(file, "IEND", {});
    return whole ? std::optional(std::move(file)) : std::nullopt;
}

} // namespace vistrane
