// Reading without libpng, beside libpng: for whatever file, both say the same and make the same
// pixels of it.

#include <gtest/gtest.h>

#include <zlib.h>

#include <algorithm>
#include <random>

#include "backends/pictures/LiteralBlock.h"
#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/png_decoding.h"
#include "tests/backends/pictures/DeflateSamples.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

constexpr PictureLimits limits{1024, 1U << 16, 1U << 20};
constexpr PixelForm pixelForms[] = {PixelForm::ARGB, PixelForm::RGBA, PixelForm::RGB};

/// How a file was taken.
struct Tally {
    std::size_t refused = 0;
    std::size_t damaged = 0;
    std::size_t decoded = 0;
    std::size_t withoutLibpng = 0;
};

struct Decoded {
    std::optional<std::string> fault;
    Bytes rows;
};

std::uint32_t below(std::mt19937& random, std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
}

constexpr std::uint8_t untouched = 0xA5;
constexpr std::size_t gap = 5;

template <typename Decode>
Decoded decoded(const PngHeader& header, PixelForm form, const Decode& decode) {
    const std::size_t stride = bytesPerPixel(form) * header.width + gap;
    Decoded result{std::nullopt, Bytes(stride * header.height, untouched)};
    result.fault = decode(result.rows.data(), static_cast<std::ptrdiff_t>(stride));
    return result;
}

/// What comes in rows, one after the other, put where the others decode to.
class RowsPutDown final : public PictureRows {
public:
    RowsPutDown(std::uint8_t* rows, std::ptrdiff_t stride, std::size_t length)
        : rows_(rows), stride_(stride), length_(length) {}
    void begin() override { place_ = rows_; }
    void take(const std::uint8_t* row) override {
        std::copy_n(row, length_, place_);
        place_ += stride_;
    }

private:
    std::uint8_t* rows_;
    std::ptrdiff_t stride_;
    std::size_t length_;
    std::uint8_t* place_ = nullptr;
};

/// False where the rows that are handed on differ from those that are decoded in place.
bool agreesPassed(const Bytes& file, const PngHeader& header, PixelForm form, bool expected,
                  const Bytes& rows) {
    bool isPassed = false;
    const Decoded passed = decoded(header, form, [&](auto* to, auto stride) {
        RowsPutDown putDown(to, stride, bytesPerPixel(form) * header.width);
        isPassed = passUsualPng(file, header, form, putDown);
        return std::optional<std::string>();
    });
    return isPassed == expected && passed.rows == rows;
}

/// False where two of them differ.
bool agree(const Bytes& file, PixelForm form, Tally& tally, const PictureLimits& allowed = limits) {
    const auto read = readPngHeader(file, allowed);
    const auto* header = std::get_if<PngHeader>(&read);
    if (header == nullptr) {
        ++tally.refused;
        return true;
    }
    bool fast = false;
    const Decoded ours = decoded(*header, form, [&](auto* rows, auto stride) {
        fast = decodeUsualPng(file, *header, form, rows, stride);
        return std::optional<std::string>();
    });
    const Decoded theirs = decoded(*header, form, [&](auto* rows, auto stride) {
        return decodeByLibpng(file, *header, form, rows, stride);
    });
    ++(theirs.fault ? tally.damaged : tally.decoded);
    tally.withoutLibpng += fast ? 1 : 0;
    // Every other file, for the time it takes; the first is one of them.
    const bool passes = (tally.damaged + tally.decoded) % 2 == 1;
    if (passes && !agreesPassed(file, *header, form, fast, ours.rows)) {
        return false;
    }
    // What is not decoded without libpng is left to it.
    return !fast || (!theirs.fault && ours.rows == theirs.rows);
}

PixelForm anyForm(std::mt19937& random) {
    return pixelForms[below(random, 3)];
}

PngForm usualForm(std::mt19937& random) {
    constexpr PngForm forms[] = {{0, 1, false, false}, {0, 2, false, false}, {0, 4, false, false},
                                 {0, 8, false, false}, {2, 8, false, false}, {2, 8, false, false},
                                 {3, 1, false, false}, {3, 2, false, false}, {3, 4, false, false},
                                 {3, 8, false, false}, {4, 8, false, false}, {6, 8, false, false},
                                 {6, 8, false, false}};
    return forms[below(random, std::uint32_t(std::size(forms)))];
}

std::size_t rowBytesOf(const PngForm& form, std::uint32_t width) {
    constexpr std::size_t components[] = {1, 0, 3, 1, 2, 0, 4};
    return 1 + (components[form.colour] * std::size_t(form.depth) * width + 7) / 8;
}

template <typename MakeStream>
Tally compareStreams(unsigned count, unsigned seed, const MakeStream& make) {
    Tally tally;
    std::mt19937 random(seed);
    for (unsigned i = 0; i < count; ++i) {
        const PngForm form = usualForm(random);
        const std::uint32_t width = 1 + below(random, random() % 4 == 0 ? 300 : 12);
        const std::uint32_t height = 1 + below(random, 4);
        Bytes file = pngAround(form, width, height, make(random, rowBytesOf(form, width), height));
        if (below(random, 8) == 0) {
            file = withSplitData(file, 1 + below(random, 40));
        }
        EXPECT_TRUE(agree(file, anyForm(random), tally))
            << "input " << i << ", " << form.text() << ", " << width << " x " << height;
    }
    return tally;
}

TEST(PngTwins, StreamsOfEveryMakeAreDecodedAlike) {
    const Tally tally = compareStreams(80000, 1, randomStream);
    EXPECT_GT(tally.withoutLibpng, 40000U);
    EXPECT_GT(tally.damaged, 8000U);
}

TEST(PngTwins, StreamsOfZlibAreDecodedAlike) {
    const Tally tally = compareStreams(30000, 2, zlibStream);
    EXPECT_GT(tally.withoutLibpng, 20000U);
    EXPECT_GT(tally.damaged, 500U);
}

TEST(PngTwins, MatchesThatTheFormatDoesNotHaveAreLeftToLibpng) {
    std::mt19937 random(10);
    constexpr PictureLimits wide{1U << 15, 1U << 16, 1U << 20};
    for (std::size_t symbol = 257; symbol < 288; ++symbol) {
        for (std::size_t farSymbol = 0; farSymbol < 32; farSymbol += symbol == 257 ? 1 : 7) {
            const Bytes stream = oneMatchStream(random, 28001, symbol, farSymbol);
            Tally tally;
            EXPECT_TRUE(agree(pngAround({0, 8, false, false}, 28000, 1, stream), PixelForm::RGB,
                              tally, wide));
            EXPECT_EQ(tally.withoutLibpng, symbol < 286 && farSymbol < 30 ? 1U : 0U)
                << symbol << ", " << farSymbol;
        }
    }
}

std::vector<Bytes> smallFiles() {
    std::vector<Bytes> files;
    for (const PngForm& form : allPngForms()) {
        files.push_back(randomPng(form, 7, 5, 11).file);
    }
    std::mt19937 random(3);
    for (int i = 0; i < 60; ++i) {
        const PngForm form = usualForm(random);
        files.push_back(pngAround(form, 9, 3, randomStream(random, rowBytesOf(form, 9), 3)));
        files.push_back(withSplitData(files.back(), 1 + below(random, 30)));
    }
    return files;
}

TEST(PngTwins, FilesWithWrongBitsAreTakenAlike) {
    Tally tally;
    std::mt19937 random(4);
    const std::vector<Bytes> files = smallFiles();
    for (int i = 0; i < 60000; ++i) {
        Bytes file = files[below(random, std::uint32_t(files.size()))];
        for (unsigned flips = 1 + below(random, 3); flips > 0; --flips) {
            file[below(random, std::uint32_t(file.size()))] ^=
                static_cast<std::uint8_t>(1U << below(random, 8));
        }
        file = below(random, 16) == 0 ? file : withRightChecksums(file);
        EXPECT_TRUE(agree(file, anyForm(random), tally)) << i;
    }
    EXPECT_GT(tally.decoded, 3000U);
    EXPECT_GT(tally.damaged, 10000U);
}

/// The same with the streams' own checksum put right, where the stream can still be read: so the
/// wrong bits show in the pixels.
Bytes withRightPixelSum(Bytes file) {
    for (const ChunkPlace& place : chunksOf(file)) {
        const auto at = [&](std::size_t i) -> std::uint8_t& { return file[place.offset + 8 + i]; };
        if (place.type == "IDAT" && place.dataLength > 6) {
            // Of a stored block: 2 bytes before it, 5 of its own and 4 after it.
            const std::size_t length = place.dataLength < 11 ? 0 : place.dataLength - 11;
            std::uint32_t low = 1;
            std::uint32_t high = 0;
            for (std::size_t i = 0; i < length; ++i) {
                low = (low + at(7 + i)) % 65521;
                high = (high + low) % 65521;
            }
            const std::uint32_t sum = high << 16 | low;
            for (std::size_t i = 0; i < 4; ++i) {
                at(place.dataLength - 4 + i) = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
            }
        }
    }
    return withRightChecksums(file);
}

/// A stream of one stored block.
Bytes storedStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    const std::size_t length = rowBytes * rows;
    Bytes stream = {0x78,
                    1,
                    1,
                    std::uint8_t(length),
                    std::uint8_t(length >> 8),
                    std::uint8_t(~length),
                    std::uint8_t(~length >> 8)};
    for (std::size_t i = 0; i < length; ++i) {
        const bool rowStart = i % rowBytes == 0;
        stream.push_back(static_cast<std::uint8_t>(rowStart ? below(random, 5) : random()));
    }
    stream.resize(stream.size() + 4);
    return stream;
}

TEST(PngTwins, AnyBytesUnderAnyFilterAreDecodedAlike) {
    Tally tally;
    std::mt19937 random(5);
    for (int i = 0; i < 30000; ++i) {
        const PngForm form = usualForm(random);
        const std::uint32_t width = 1 + below(random, 40);
        const std::uint32_t height = 1 + below(random, 5);
        const Bytes stream = storedStream(random, rowBytesOf(form, width), height);
        Bytes file = pngAround(form, width, height, stream);
        if (below(random, 4) == 0) {
            file[file.size() - 20 - below(random, std::uint32_t(stream.size()))] ^=
                static_cast<std::uint8_t>(1U << below(random, 8));
        }
        EXPECT_TRUE(agree(withRightPixelSum(file), anyForm(random), tally)) << i;
    }
    EXPECT_GT(tally.withoutLibpng, 25000U);
}

TEST(PngTwins, FilesCutOffAnywhereAreTakenAlike) {
    Tally tally;
    std::mt19937 random(6);
    for (const Bytes& whole : smallFiles()) {
        for (const ChunkPlace& place : chunksOf(whole)) {
            // The last chunk of pixels ends early, under a right checksum.
            for (std::size_t length = 0; place.type == "IDAT" && length < place.dataLength;
                 ++length) {
                Bytes file(whole.begin(), whole.begin() + std::ptrdiff_t(place.offset));
                const Bytes data =
                    chunk("IDAT", std::span(whole).subspan(place.offset + 8, length));
                const Bytes end = chunk("IEND", Bytes());
                file.insert(file.end(), data.begin(), data.end());
                file.insert(file.end(), end.begin(), end.end());
                EXPECT_TRUE(agree(file, anyForm(random), tally)) << length;
            }
        }
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_TRUE(agree(Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(length)),
                              anyForm(random), tally));
        }
    }
    EXPECT_GT(tally.damaged, 3000U);
    EXPECT_GT(tally.refused, 3000U);
}

Bytes randomChunk(std::mt19937& random) {
    constexpr const char* types[] = {"PLTE", "tRNS", "tRNS", "gAMA",
                                     "tEXt", "sBIT", "IDAT", "abCd"};
    Bytes data(below(random, 10) == 0 ? below(random, 800) : (1 + below(random, 4)) * 3);
    std::generate(data.begin(), data.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return chunk(types[below(random, std::uint32_t(std::size(types)))], data);
}

TEST(PngTwins, FilesOfRandomPartsAreTakenAlike) {
    Tally tally;
    std::mt19937 random(7);
    const std::vector<Bytes> files = smallFiles();
    for (int i = 0; i < 30000; ++i) {
        Bytes file = files[below(random, std::uint32_t(files.size()))];
        for (unsigned changes = 1 + below(random, 3); changes > 0; --changes) {
            const auto chunks = chunksOf(file);
            const ChunkPlace& place = chunks[1 + below(random, std::uint32_t((chunks.size() - 1)))];
            const auto start = file.begin() + std::ptrdiff_t(place.offset);
            const auto end = start + std::ptrdiff_t(place.dataLength + 12);
            if (below(random, 8) == 0 && place.type != "IEND") {
                file.erase(start, end);
            } else {
                const Bytes more = below(random, 4) == 0 ? Bytes(start, end) : randomChunk(random);
                file.insert(start, more.begin(), more.end());
            }
        }
        EXPECT_TRUE(agree(file, anyForm(random), tally)) << i;
    }
    EXPECT_GT(tally.decoded, 5000U);
    EXPECT_GT(tally.refused, 2000U);
}

TEST(PngTwins, TheUsualFormsNeedNoLibpng) {
    for (const PngForm& form : allPngForms()) {
        const bool rare =
            form.depth == 16 || form.interlaced || (form.transparency && form.colour != 3);
        for (const PixelForm pixels : pixelForms) {
            Tally tally;
            EXPECT_TRUE(agree(randomPng(form, 33, 9).file, pixels, tally)) << form.text();
            EXPECT_EQ(tally.withoutLibpng, rare ? 0U : 1U) << form.text();
        }
    }
}

/// More than the part of the picture that is at hand at once, by more than one writer.
TEST(PngTwins, LargePicturesAreDecodedAlike) {
    Tally tally;
    std::mt19937 random(8);
    constexpr PictureLimits large{1U << 15, 1U << 24, 1U << 26};
    for (int i = 0; i < 40; ++i) {
        const PngForm form = usualForm(random);
        const std::uint32_t width = 1 + below(random, i % 10 == 0 ? 30000 : 1500);
        const std::uint32_t height = 1 + 200000 / width;
        Bytes file =
            pngAround(form, width, height, zlibStream(random, rowBytesOf(form, width), height));
        file = i % 2 == 0 ? withSplitData(file, 1000 + below(random, 9000)) : file;
        EXPECT_TRUE(agree(file, anyForm(random), tally, large)) << i;
    }
    EXPECT_GT(tally.withoutLibpng, 15U);
}

/// Noise is a little longer in the file than in memory, whoever writes it.
TEST(PngTwins, LargePicturesOfNoiseNeedNoLibpng) {
    constexpr PictureLimits large{1U << 15, 1U << 24, 1U << 26};
    for (const PngForm& form : {PngForm{2, 8, false, false}, PngForm{6, 8, false, false}}) {
        const Bytes file = randomPng(form, 640, 560).file;
        ASSERT_GT(file.size(), rowBytesOf(form, 640) * 560);
        Tally tally;
        EXPECT_TRUE(agree(file, PixelForm::RGB, tally, large)) << form.text();
        EXPECT_EQ(tally.withoutLibpng, 1U) << form.text();
    }
}

/// The pixel stream of a picture in pieces, each a chunk: mostly blocks of nothing but literals,
/// as this program's own frames have them.
struct Pieces {
    std::vector<Bytes> stream;
    Bytes bytes;
};

Bytes zlibPiece(const Bytes& bytes, int flush) {
    z_stream zlib{};
    EXPECT_EQ(deflateInit2(&zlib, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY), Z_OK);
    Bytes piece(bytes.size() * 2 + 100);
    zlib.next_in = const_cast<Bytef*>(bytes.data());
    zlib.avail_in = static_cast<uInt>(bytes.size());
    zlib.next_out = piece.data();
    zlib.avail_out = static_cast<uInt>(piece.size());
    deflate(&zlib, flush);
    piece.resize(zlib.total_out);
    deflateEnd(&zlib);
    return piece;
}

Pieces literalPieces(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    Pieces pieces;
    for (std::size_t i = 0; i < rowBytes * rows; ++i) {
        const std::uint32_t noise = below(random, 8) * below(random, 30);
        pieces.bytes.push_back(
            static_cast<std::uint8_t>(i % rowBytes == 0 ? below(random, 5) : noise));
    }
    pieces.stream.push_back({0x78, 0x01});
    const bool alone = below(random, 2) == 0;
    for (std::size_t from = 0; from < pieces.bytes.size();) {
        const std::size_t length =
            std::min<std::size_t>(1800 + below(random, 1200), pieces.bytes.size() - from);
        const auto start = pieces.bytes.begin() + std::ptrdiff_t(from);
        const Bytes part(start, start + std::ptrdiff_t(length));
        from += length;
        const bool last = from == pieces.bytes.size();
        Bytes piece;
        if (below(random, 8) == 0) {
            piece = zlibPiece(part, last ? Z_FINISH : Z_SYNC_FLUSH);
        } else {
            const LiteralBlock block(part);
            piece.resize(block.room());
            piece.resize(std::size_t(block.write(piece.data(), last) - piece.data()));
        }
        if (pieces.stream.size() == 1 && alone) {
            pieces.stream.front().insert(pieces.stream.front().end(), piece.begin(), piece.end());
        } else {
            pieces.stream.push_back(piece);
        }
    }
    return pieces;
}

/// With the checksum of what zlib makes of it.
Bytes checksumOf(const Pieces& pieces) {
    Bytes stream;
    for (const Bytes& piece : pieces.stream) {
        stream.insert(stream.end(), piece.begin(), piece.end());
    }
    Bytes made(pieces.bytes.size() + 1);
    z_stream zlib{};
    EXPECT_EQ(inflateInit(&zlib), Z_OK);
    zlib.next_in = stream.data();
    zlib.avail_in = static_cast<uInt>(stream.size());
    zlib.next_out = made.data();
    zlib.avail_out = static_cast<uInt>(made.size());
    inflate(&zlib, Z_SYNC_FLUSH);
    const uLong sum = ::adler32(1, made.data(), static_cast<uInt>(zlib.total_out));
    inflateEnd(&zlib);
    return {std::uint8_t(sum >> 24), std::uint8_t(sum >> 16), std::uint8_t(sum >> 8),
            std::uint8_t(sum)};
}

void damage(std::vector<Bytes>& stream, std::mt19937& random) {
    const std::size_t index = 1 + below(random, std::uint32_t(stream.size() - 1));
    Bytes& piece = stream[index];
    switch (below(random, 6)) {
    case 0:
        piece.resize(below(random, std::uint32_t(piece.size())));
        break;
    case 1:
        std::swap(piece, stream[below(random, std::uint32_t(stream.size()))]);
        break;
    case 2:
        piece.insert(piece.end(), {0, 0, 0, 0xFF, 0xFF});
        break;
    case 3: // the other parts of the chunk move into the one before
        stream[index - 1].insert(stream[index - 1].end(), piece.begin(), piece.begin() + 1);
        piece.erase(piece.begin());
        break;
    case 4: // in the heads, where a bit changes all codes
        piece[below(random, std::min(60U, std::uint32_t(piece.size())))] ^=
            static_cast<std::uint8_t>(1U << below(random, 8));
        break;
    default:
        piece[below(random, std::uint32_t(piece.size()))] ^=
            static_cast<std::uint8_t>(1U << below(random, 8));
        break;
    }
}

TEST(PngTwins, ChunksOfLiteralsAreDecodedAlike) {
    Tally tally;
    std::mt19937 random(11);
    const PngForm form{2, 8, false, false};
    for (int i = 0; i < 6000; ++i) {
        const std::uint32_t width = 1 + below(random, 100);
        const std::uint32_t height = 1 + below(random, 12000 / width / 3);
        Pieces pieces = literalPieces(random, rowBytesOf(form, width), height);
        for (unsigned count = below(random, 3); count > 0; --count) {
            if (pieces.stream.size() > 1) {
                damage(pieces.stream, random);
            }
        }
        const Bytes sum = checksumOf(pieces);
        pieces.stream.back().insert(pieces.stream.back().end(), sum.begin(), sum.end());
        Bytes file = pngAround(form, width, height, pieces.stream.front());
        const Bytes end(file.end() - 12, file.end());
        file.resize(file.size() - end.size());
        for (std::size_t piece = 1; piece < pieces.stream.size(); ++piece) {
            const Bytes data = chunk("IDAT", pieces.stream[piece]);
            file.insert(file.end(), data.begin(), data.end());
        }
        file.insert(file.end(), end.begin(), end.end());
        EXPECT_TRUE(agree(file, anyForm(random), tally)) << i;
    }
    EXPECT_LT(tally.refused, 200U);
    EXPECT_GT(tally.withoutLibpng, 2000U);
    EXPECT_GT(tally.damaged, 1000U);
}

TEST(PngTwins, OddFilesGetTheVerdictOfLibpng) {
    std::mt19937 random(9);
    for (int i = 0; i < 2000; ++i) {
        const Bytes file = pngAround({2, 8, false, false}, 20, 3, randomStream(random, 61, 3));
        const auto read = readPngHeader(file, limits);
        const auto* header = std::get_if<PngHeader>(&read);
        if (header == nullptr) {
            continue;
        }
        const auto whole = [&](const auto& decode) {
            return decoded(*header, PixelForm::ARGB, [&](auto* rows, auto stride) {
                return decode(file, *header, PixelForm::ARGB, rows, stride);
            });
        };
        const Decoded ours = whole(decodePng);
        const Decoded theirs = whole(decodeByLibpng);
        EXPECT_EQ(ours.fault, theirs.fault);
        EXPECT_TRUE(ours.fault || ours.rows == theirs.rows);
    }
}

} // namespace
} // namespace vistrane::testing
