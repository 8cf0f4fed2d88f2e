#include "platform/media/pictures/igzip_encoding.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "platform/media/pictures/png_filters.h"

namespace vistrane {

namespace {

/// Filtered rows are handed on when there are about so many bytes, and chunks of pixels are as
/// long: the caches hold both.
constexpr std::size_t slab = std::size_t{256} * 1024;

/// The level that finds least, and still files are smaller than zlib's at its own: what it leaves
/// out of noise was not worth its code.
constexpr std::uint32_t level = 1;
constexpr std::size_t levelMemory = ISAL_DEF_LVL1_LARGE;

constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t chunkHead = 8;
constexpr std::size_t chunkEnd = 4;
constexpr std::uint8_t perMetre = 1;
constexpr std::uint8_t perceptual = 0;

void putNumber(std::uint8_t* bytes, std::size_t number) {
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    }
}

/// Puts the frame around a chunk's data, which lie where they belong.
void frameChunk(std::uint8_t* chunk, const char* type, std::size_t length) {
    putNumber(chunk, length);
    std::memcpy(chunk + 4, type, 4);
    putNumber(chunk + chunkHead + length, ::libdeflate_crc32(0, chunk + 4, 4 + length));
}

template <std::size_t Length>
bool appendChunk(ByteArray& file, const char* type, const std::array<std::uint8_t, Length>& data) {
    std::array<std::uint8_t, chunkHead + Length + chunkEnd> chunk{};
    std::copy(data.begin(), data.end(), chunk.begin() + chunkHead);
    frameChunk(chunk.data(), type, Length);
    return file.append(chunk);
}

bool appendHead(ByteArray& file, const PictureShape& shape) {
    constexpr std::uint8_t colour = 2;
    constexpr std::uint8_t colourAndAlpha = 6;
    std::array<std::uint8_t, 13> size{};
    putNumber(size.data(), shape.width);
    putNumber(size.data() + 4, shape.height);
    size[8] = 8;
    size[9] = shape.mayBeTransparent ? colourAndAlpha : colour;
    if (!file.append(signature) || !appendChunk(file, "IHDR", size) ||
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

/// Compresses bytes into chunks of pixels.
class PixelChunks {
public:
    explicit PixelChunks(ByteArray& file) : file_(file) {}

    /// False when there is no memory; so are the others.
    bool begin() {
        stream_.reset(new (std::nothrow) isal_zstream);
        auto memory = ByteArray::ofLength(levelMemory);
        auto chunk = ByteArray::ofLength(chunkHead + slab + chunkEnd);
        if (!stream_ || !memory || !chunk) {
            return false;
        }
        memory_ = std::move(*memory);
        chunk_ = std::move(*chunk);
        ::isal_deflate_init(stream_.get());
        stream_->level = level;
        stream_->level_buf = memory_.data();
        stream_->level_buf_size = static_cast<std::uint32_t>(memory_.length());
        stream_->gzip_flag = IGZIP_ZLIB;
        startChunk();
        return true;
    }

    bool add(std::span<std::uint8_t> bytes, bool last) {
        stream_->next_in = bytes.data();
        stream_->avail_in = static_cast<std::uint32_t>(bytes.size());
        stream_->end_of_stream = last ? 1 : 0;
        while (stream_->avail_in > 0 || (last && stream_->internal_state.state != ZSTATE_END)) {
            if (::isal_deflate(stream_.get()) != COMP_OK) {
                return false;
            }
            if (stream_->avail_out == 0 && !endChunk()) {
                return false;
            }
        }
        return !last || stream_->avail_out == slab || endChunk();
    }

private:
    void startChunk() {
        stream_->next_out = chunk_.data() + chunkHead;
        stream_->avail_out = slab;
    }

    bool endChunk() {
        const std::size_t length = slab - stream_->avail_out;
        frameChunk(chunk_.data(), "IDAT", length);
        startChunk();
        return file_.append(chunk_.bytes().first(chunkHead + length + chunkEnd));
    }

    ByteArray& file_;
    std::unique_ptr<isal_zstream> stream_;
    ByteArray memory_;
    ByteArray chunk_;
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
    const bool whole = appendHead(file, shape) && appendPixels(file, shape, rows, stride) &&
                       appendChunk<0>(file, "IEND", {});
    return whole ? std::optional(std::move(file)) : std::nullopt;
}

} // namespace vistrane
