#include "backends/pictures/png_decoding.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/Inflation.h"
#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/png_expansion.h"
#include "backends/pictures/png_filters.h"

namespace vistrane {

namespace {

constexpr std::size_t longestRow = std::size_t{1} << 24;

/// libpng refuses chunks that are longer than the pixels could need, unless they are short.
/// Incompressible pixels are stored in blocks of about 32 KiB, each with a header of 5 bytes.
std::size_t longestChunk(std::size_t length) {
    constexpr std::size_t shortChunk = 1'000'000;
    constexpr std::size_t block = 32566;
    return std::max(length + 6 + 5 * (length / block + 1), shortChunk);
}

/// Decodes into rows in memory.
class RowsInMemory {
public:
    RowsInMemory(std::uint8_t* rows, std::ptrdiff_t stride) : rows_(rows), stride_(stride) {}

    bool begin(std::size_t) { return true; }
    std::uint8_t* place() { return rows_; }
    void filled() { rows_ += stride_; }

private:
    std::uint8_t* rows_;
    std::ptrdiff_t stride_;
};

/// Passes each row as soon as it is decoded. Keeps only the row above.
class PassedRows {
public:
    explicit PassedRows(PictureRows& rows) : rows_(rows) {}

    bool begin(std::size_t length) {
        auto lines = ByteArray::ofLength(2 * length);
        if (!lines) {
            return false;
        }
        lines_ = std::move(*lines);
        place_ = lines_.data();
        other_ = lines_.data() + length;
        rows_.begin();
        return true;
    }
    std::uint8_t* place() { return place_; }
    void filled() {
        rows_.take(place_);
        std::swap(place_, other_);
    }

private:
    PictureRows& rows_;
    ByteArray lines_;
    std::uint8_t* place_ = nullptr;
    std::uint8_t* other_ = nullptr;
};

/// Converts decompressed bytes to rows of the requested form.
template <typename Rows>
class RowWriting {
public:
    RowWriting(const PngExpansion& expansion, Rows& rows)
        : expansion_(expansion), length_(expansion.rowBytes()), rows_(rows) {}

    /// `length`: of a resulting row. Returns false if there is not enough memory.
    bool begin(std::size_t length) {
        const std::size_t room = length_ + filterMargin;
        auto lines = ByteArray::ofLength(expansion_.isCopy() ? room : 2 * room);
        if (!lines || !rows_.begin(length)) {
            return false;
        }
        lines_ = std::move(*lines);
        std::memset(lines_.data(), 0, lines_.length());
        above_ = lines_.data();
        line_ = lines_.data() + room;
        return true;
    }

    /// Takes one row, preceded by its filter number. Returns false if the number is invalid.
    bool write(const std::uint8_t* filtered) {
        if (filtered[0] > lastPngFilter) {
            return false;
        }
        std::uint8_t* to = expansion_.isCopy() ? rows_.place() : line_;
        unfilterRow(static_cast<PngFilter>(filtered[0]), filtered + 1, above_, to, length_,
                    expansion_.pixelBytes());
        if (expansion_.isCopy()) {
            above_ = to;
        } else {
            expansion_.expand(to, rows_.place());
            std::swap(above_, line_);
        }
        rows_.filled();
        return true;
    }

private:
    const PngExpansion& expansion_;
    std::size_t length_;
    Rows& rows_;
    ByteArray lines_;
    std::uint8_t* above_ = nullptr;
    std::uint8_t* line_ = nullptr;
};

template <typename Rows>
bool decodeUsual(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                 Rows& rows) {
    if (header.interlaced) {
        return false;
    }
    const auto expansion = PngExpansion::of(file, header, form);
    if (!expansion || expansion->rowBytes() > longestRow) {
        return false;
    }
    const std::size_t rowBytes = expansion->rowBytes() + 1;
    const std::size_t length = rowBytes * header.height;
    if (header.longestImageChunk > longestChunk(length)) {
        return false;
    }
    RowWriting writing(*expansion, rows);
    if (!writing.begin(bytesPerPixel(form) * header.width)) {
        return false;
    }
    const ByteRange& chunks = header.imageChunks;
    Inflation inflation(file.subspan(chunks.offset, chunks.length), length, rowBytes);
    Inflation::Outcome outcome = Inflation::Outcome::Going;
    while (outcome == Inflation::Outcome::Going) {
        outcome = inflation.more();
        while (outcome != Inflation::Outcome::Refused && inflation.freshLength() >= rowBytes) {
            if (!writing.write(inflation.fresh())) {
                return false;
            }
            inflation.take(rowBytes);
        }
    }
    return outcome == Inflation::Outcome::Ended;
}

} // namespace

bool decodeUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                    std::uint8_t* rows, std::ptrdiff_t stride) {
    RowsInMemory inMemory(rows, stride);
    return decodeUsual(file, header, form, inMemory);
}

bool passUsualPng(std::span<const std::uint8_t> file, const PngHeader& header, PixelForm form,
                  PictureRows& rows) {
    PassedRows passed(rows);
    return decodeUsual(file, header, form, passed);
}

std::optional<std::string> decodePng(std::span<const std::uint8_t> file, const PngHeader& header,
                                     PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride) {
    if (decodeUsualPng(file, header, form, rows, stride)) {
        return std::nullopt;
    }
    return decodeByLibpng(file, header, form, rows, stride);
}

} // namespace vistrane
