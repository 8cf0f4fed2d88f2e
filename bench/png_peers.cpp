#include "bench/png_peers.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>

#include "backends/pictures/png_expansion.h"
#include "backends/pictures/png_filters.h"
#include "backends/pictures/png_header.h"
#include "bench/measuring.h"

namespace vistrane::bench {

namespace {

struct Source {
    std::span<const std::uint8_t> left;
};

void giveBytes(png_structp png, png_bytep to, std::size_t length) {
    auto* source = static_cast<Source*>(png_get_io_ptr(png));
    if (length > source->left.size()) {
        png_error(png, "end");
    }
    std::memcpy(to, source->left.data(), length);
    source->left = source->left.subspan(length);
}

} // namespace

void readByLibpng(const Bytes& file, Bytes& rgba) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Source source{file};
    png_set_read_fn(png, &source, giveBytes);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    png_read_update_info(png, info);
    const std::size_t stride = png_get_rowbytes(png, info);
    for (std::size_t y = 0; y < png_get_image_height(png, info); ++y) {
        png_read_row(png, rgba.data() + y * stride, nullptr);
    }
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
}

namespace {

void takeBytes(png_structp png, png_bytep bytes, std::size_t length) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    file->insert(file->end(), bytes, bytes + length);
}

void flushNothing(png_structp) {}

} // namespace

Bytes writeByLibpng(const SamplePicture& picture, int level) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, takeBytes, flushNothing);
    png_set_IHDR(png, info, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (level >= 0) {
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
        png_set_compression_level(png, level);
        png_set_compression_buffer_size(png, std::size_t{1} << 18);
    }
    png_write_info(png, info);
    for (std::size_t y = 0; y < picture.height; ++y) {
        png_write_row(png, picture.rgb.data() + y * picture.width * 3);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

namespace {

/// Receives the decompressed rows of a usual file and unfilters them.
class UsualRows {
public:
    UsualRows(const Bytes& file, Bytes& rgba)
        : header_(std::get<PngHeader>(readPngHeader(file, PictureLimits()))),
          expansion_(PngExpansion::of(file, header_, PixelForm::RGBA)), to_(rgba.data()) {
        require(expansion_ && !expansion_->isCopy() && !header_.interlaced, "not a usual file");
        above_.resize(expansion_->rowBytes() + filterMargin);
        line_ = above_;
    }

    const PngHeader& header() const { return header_; }
    /// The length of a row including the filter number.
    std::size_t rowBytes() const { return expansion_->rowBytes() + 1; }

    /// Takes whole rows. 16 bytes past the end of `filtered` must be readable. Returns the number
    /// of bytes taken.
    std::size_t write(const std::uint8_t* filtered, std::size_t length) {
        std::size_t taken = 0;
        for (; length - taken >= rowBytes(); taken += rowBytes()) {
            unfilterRow(static_cast<PngFilter>(filtered[taken]), filtered + taken + 1,
                        above_.data(), line_.data(), expansion_->rowBytes(),
                        expansion_->pixelBytes());
            expansion_->expand(line_.data(), to_);
            to_ += std::size_t{header_.width} * 4;
            above_.swap(line_);
        }
        return taken;
    }

private:
    PngHeader header_;
    std::optional<PngExpansion> expansion_;
    std::uint8_t* to_;
    Bytes above_;
    Bytes line_;
};

/// Calls `take` with the data of each IDAT chunk.
template <typename Take>
void forEachImageChunk(const Bytes& file, const PngHeader& header, const Take& take) {
    std::span<const std::uint8_t> chunks =
        std::span(file).subspan(header.imageChunks.offset, header.imageChunks.length);
    while (!chunks.empty()) {
        const std::size_t length = png_get_uint_32(chunks.data());
        take(chunks.subspan(8, length));
        chunks = chunks.subspan(12 + length);
    }
}

} // namespace

void readByUsWithIsal(const Bytes& file, Bytes& rgba) {
    UsualRows rows(file, rgba);
    constexpr std::size_t part = std::size_t{128} * 1024;
    Bytes made(part + rows.rowBytes() + filterMargin);
    std::size_t kept = 0;
    const auto state = std::make_unique<inflate_state>();
    isal_inflate_init(state.get());
    state->crc_flag = ISAL_ZLIB;
    forEachImageChunk(file, rows.header(), [&](std::span<const std::uint8_t> data) {
        state->next_in = const_cast<std::uint8_t*>(data.data());
        state->avail_in = static_cast<std::uint32_t>(data.size());
        do {
            state->next_out = made.data() + kept;
            state->avail_out = part;
            require(isal_inflate(state.get()) == ISAL_DECOMP_OK, "isa-l refuses a stream");
            const std::size_t length = kept + part - state->avail_out;
            const std::size_t taken = rows.write(made.data(), length);
            kept = length - taken;
            std::memmove(made.data(), made.data() + taken, kept);
        } while (state->avail_out == 0 ||
                 (state->avail_in > 0 && state->block_state != ISAL_BLOCK_FINISH));
    });
    require(state->block_state == ISAL_BLOCK_FINISH && kept == 0, "isa-l has not finished");
}

void readByUsWithLibdeflate(const Bytes& file, Bytes& rgba) {
    UsualRows rows(file, rgba);
    Bytes data;
    data.reserve(rows.header().imageBytes);
    forEachImageChunk(file, rows.header(), [&](std::span<const std::uint8_t> some) {
        data.insert(data.end(), some.begin(), some.end());
    });
    const std::size_t length = rows.rowBytes() * rows.header().height;
    // Not cleared, because that would be a cost of the benchmark.
    const std::unique_ptr<std::uint8_t[]> made(new std::uint8_t[length + filterMargin]);
    libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
    require(libdeflate_zlib_decompress(decompressor, data.data(), data.size(), made.get(), length,
                                       nullptr) == LIBDEFLATE_SUCCESS,
            "libdeflate refuses a stream");
    libdeflate_free_decompressor(decompressor);
    rows.write(made.get(), length);
}

namespace {

class BitWriter {
public:
    explicit BitWriter(Bytes& bytes) : bytes_(bytes) {}
    void put(unsigned bits, unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            if (count_++ % 8 == 0) {
                bytes_.push_back(0);
            }
            bytes_.back() =
                static_cast<std::uint8_t>(bytes_.back() | (bits >> i & 1U) << (count_ - 1) % 8);
        }
    }
    void align() { count_ = (count_ + 7) / 8 * 8; }

private:
    Bytes& bytes_;
    std::size_t count_ = 0;
};

/// A block with codes for 255 and the end of the block, and none for distances.
void putEmptyDynamicBlock(BitWriter& out) {
    out.put(4, 3);
    out.put(14 << 10, 14);
    for (const unsigned symbol : {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1}) {
        out.put(symbol == 18 ? 1 : symbol < 2 ? 2 : 0, 3);
    }
    for (const unsigned zeros : {138U, 117U}) {
        out.put((zeros - 11) << 1, 8);
    }
    out.put(0b01'11'11, 6);
    out.put(1, 1);
}

void appendChunk(Bytes& file, const char* type, const Bytes& data) {
    Bytes chunk(8);
    png_save_uint_32(chunk.data(), static_cast<png_uint_32>(data.size()));
    std::memcpy(chunk.data() + 4, type, 4);
    chunk.insert(chunk.end(), data.begin(), data.end());
    const auto checksum = ::crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4));
    chunk.resize(chunk.size() + 4);
    png_save_uint_32(chunk.data() + chunk.size() - 4, static_cast<png_uint_32>(checksum));
    file.insert(file.end(), chunk.begin(), chunk.end());
}

} // namespace

Bytes hostileFile(const std::string& kind, std::size_t length) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    appendChunk(file, "IHDR", {0, 0, 0, 1, 0, 0, 0, 1, 8, 0, 0, 0, 0});
    while ((kind == "IDAT" || kind == "tEXt") && file.size() < length) {
        appendChunk(file, kind.c_str(), {});
    }
    Bytes stream = {0x78, 0x01};
    BitWriter out(stream);
    while (file.size() + stream.size() < length) {
        if (kind == "stored") {
            out.put(0, 3);
            out.align();
            out.put(0xFFFF0000, 32);
        } else if (kind == "fixed") {
            out.put(2, 10);
        } else {
            putEmptyDynamicBlock(out);
        }
    }
    // A stored block of two zeros: the filter and the pixel.
    out.put(1, 3);
    out.align();
    out.put(0xFFFD0002, 32);
    const Bytes end = {0, 0, 0, 2, 0, 1};
    stream.insert(stream.end(), end.begin(), end.end());
    appendChunk(file, "IDAT", stream);
    appendChunk(file, "IEND", {});
    return file;
}

} // namespace vistrane::bench
