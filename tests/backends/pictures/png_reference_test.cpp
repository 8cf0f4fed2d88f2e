// Our own PNG decoder against libpng, its reference implementation: it decodes a file to the same
// pixels, or leaves it to libpng.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/png_decoding.h"
#include "tests/backends/pictures/DeflateSamples.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

constexpr PictureLimits limits{1024, 1U << 16, 1U << 20};
constexpr PixelForm pixelForms[] = {PixelForm::ARGB, PixelForm::RGBA, PixelForm::RGB};

/// What became of the files.
struct Tally {
    std::size_t refused = 0;
    std::size_t damaged = 0;
    std::size_t decoded = 0;
    std::size_t withoutLibpng = 0;
};

constexpr std::uint8_t unwritten = 0xA5;
constexpr std::size_t gap = 5;

/// Rows with a gap after each.
struct Rows {
    Rows(const PngHeader& header, PixelForm form)
        : length(bytesPerPixel(form) * header.width),
          bytes((length + gap) * header.height, unwritten) {}
    std::ptrdiff_t stride() const { return std::ptrdiff_t(length + gap); }

    std::size_t length;
    Bytes bytes;
};

/// Stores rows that come one after the other where the other decoders put them.
class StoredRows final : public PictureRows {
public:
    explicit StoredRows(Rows& rows) : rows_(rows) {}
    void begin() override { place_ = rows_.bytes.data(); }
    void take(const std::uint8_t* row) override {
        std::copy_n(row, rows_.length, place_);
        place_ += rows_.stride();
    }

private:
    Rows& rows_;
    std::uint8_t* place_ = nullptr;
};

/// False where our own decoder and libpng differ, or our own in one go and row by row.
bool agree(const Bytes& file, PixelForm form, Tally& tally, const PictureLimits& allowed = limits) {
    const auto read = readPngHeader(file, allowed);
    const auto* header = std::get_if<PngHeader>(&read);
    if (header == nullptr) {
        ++tally.refused;
        return true;
    }
    Rows ours(*header, form);
    Rows theirs = ours;
    Rows handedOn = ours;
    const bool fast = decodeUsualPng(file, *header, form, ours.bytes.data(), ours.stride());
    const auto fault = decodeByLibpng(file, *header, form, theirs.bytes.data(), theirs.stride());
    ++(fault ? tally.damaged : tally.decoded);
    tally.withoutLibpng += fast ? 1 : 0;
    // Every other file, to save time; the first is one of them.
    if ((tally.damaged + tally.decoded) % 2 == 1) {
        StoredRows rows(handedOn);
        if (passUsualPng(file, *header, form, rows) != fast || handedOn.bytes != ours.bytes) {
            return false;
        }
    }
    return !fast || (!fault && ours.bytes == theirs.bytes);
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
    return forms[below(random, std::size(forms))];
}

template <typename MakeStream>
Tally compareStreams(unsigned count, unsigned seed, const MakeStream& make) {
    Tally tally;
    std::mt19937 random(seed);
    for (unsigned i = 0; i < count; ++i) {
        const PngForm form = usualForm(random);
        const std::uint32_t width = 1 + below(random, random() % 4 == 0 ? 300 : 12);
        const std::uint32_t height = 1 + below(random, 4);
        const Bytes stream = make(random, form.rowBytes(width), height);
        Bytes file = pngAround(form, width, height, {&stream, 1});
        if (below(random, 8) == 0) {
            file = withSplitData(file, 1 + below(random, 40));
        }
        EXPECT_TRUE(agree(file, anyForm(random), tally))
            << "input " << i << ", " << form.text() << ", " << width << " x " << height;
    }
    return tally;
}

TEST(PngReference, RandomStreamsAreDecodedAlike) {
    const Tally tally = compareStreams(80000, 1, randomStream);
    EXPECT_GT(tally.withoutLibpng, 40000U);
    EXPECT_GT(tally.damaged, 8000U);
}

TEST(PngReference, ZlibsStreamsAreDecodedAlike) {
    const Tally tally = compareStreams(30000, 2, zlibStream);
    EXPECT_GT(tally.withoutLibpng, 20000U);
    EXPECT_GT(tally.damaged, 500U);
}

std::vector<Bytes> smallFiles() {
    std::vector<Bytes> files;
    for (const PngForm& form : allPngForms()) {
        files.push_back(randomPng(form, 7, 5, 11).file);
    }
    std::mt19937 random(3);
    for (int i = 0; i < 60; ++i) {
        const PngForm form = usualForm(random);
        const Bytes stream = randomStream(random, form.rowBytes(9), 3);
        files.push_back(pngAround(form, 9, 3, {&stream, 1}));
        files.push_back(withSplitData(files.back(), 1 + below(random, 30)));
    }
    return files;
}

TEST(PngReference, FilesWithWrongBitsAreReadAlike) {
    Tally tally;
    std::mt19937 random(4);
    const std::vector<Bytes> files = smallFiles();
    for (int i = 0; i < 60000; ++i) {
        Bytes file = files[below(random, files.size())];
        for (unsigned flips = 1 + below(random, 3); flips > 0; --flips) {
            file[below(random, file.size())] ^= static_cast<std::uint8_t>(1U << below(random, 8));
        }
        file = below(random, 16) == 0 ? file : withRightChecksums(file);
        EXPECT_TRUE(agree(file, anyForm(random), tally)) << i;
    }
    EXPECT_GT(tally.decoded, 3000U);
    EXPECT_GT(tally.damaged, 10000U);
}

/// Stored rows of any bytes. One in twelve has a filter that may not be valid.
Bytes storedStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    Bytes bytes = randomRows(random, rowBytes, rowBytes * rows);
    if (below(random, 12) == 0) {
        bytes[rowBytes * below(random, rows)] = static_cast<std::uint8_t>(random());
    }
    DeflateWriter writer;
    writer.stored(bytes, true);
    return writer.finish();
}

TEST(PngReference, AnyBytesUnderAnyFilterAreDecodedAlike) {
    const Tally tally = compareStreams(30000, 5, storedStream);
    EXPECT_GT(tally.withoutLibpng, 25000U);
    EXPECT_GT(tally.damaged, 500U);
}

TEST(PngReference, TruncatedFilesAreReadAlike) {
    Tally tally;
    std::mt19937 random(6);
    for (const Bytes& whole : smallFiles()) {
        for (const ChunkPlace& place : chunksOf(whole)) {
            // The pixels end early, under a right checksum.
            for (std::size_t length = 0; place.type == "IDAT" && length < place.dataLength;
                 ++length) {
                Bytes file(whole.begin(), whole.begin() + std::ptrdiff_t(place.offset));
                append(file, chunk("IDAT", std::span(whole).subspan(place.offset + 8, length)));
                append(file, chunk("IEND", {}));
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
    const Bytes data = randomBytes(random, below(random, 10) == 0 ? below(random, 800)
                                                                  : (1 + below(random, 4)) * 3);
    return chunk(types[below(random, std::size(types))], data);
}

TEST(PngReference, FilesOfRandomChunksAreReadAlike) {
    Tally tally;
    std::mt19937 random(7);
    const std::vector<Bytes> files = smallFiles();
    for (int i = 0; i < 30000; ++i) {
        Bytes file = files[below(random, files.size())];
        for (unsigned changes = 1 + below(random, 3); changes > 0; --changes) {
            const auto chunks = chunksOf(file);
            const ChunkPlace& place = chunks[1 + below(random, chunks.size() - 1)];
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

TEST(PngReference, UsualFormsAreDecodedWithoutLibpng) {
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

/// Longer than what is decompressed at once.
TEST(PngReference, LargePicturesAreDecodedAlike) {
    Tally tally;
    std::mt19937 random(8);
    constexpr PictureLimits large{1U << 15, 1U << 24, 1U << 26};
    for (int i = 0; i < 40; ++i) {
        const PngForm form = usualForm(random);
        const std::uint32_t width = 1 + below(random, i % 10 == 0 ? 30000 : 1500);
        const std::uint32_t height = 1 + 200000 / width;
        const Bytes stream = zlibStream(random, form.rowBytes(width), height);
        Bytes file = pngAround(form, width, height, {&stream, 1});
        file = i % 2 == 0 ? withSplitData(file, 1000 + below(random, 9000)) : file;
        EXPECT_TRUE(agree(file, anyForm(random), tally, large)) << i;
    }
    EXPECT_GT(tally.withoutLibpng, 15U);
}

/// Noise is a little longer in the file than in memory.
TEST(PngReference, LargeNoiseIsDecodedWithoutLibpng) {
    constexpr PictureLimits large{1U << 15, 1U << 24, 1U << 26};
    for (const PngForm& form : {PngForm{2, 8, false, false}, PngForm{6, 8, false, false}}) {
        const Bytes file = randomPng(form, 640, 560).file;
        ASSERT_GT(file.size(), form.rowBytes(640) * 560);
        Tally tally;
        EXPECT_TRUE(agree(file, PixelForm::RGB, tally, large)) << form.text();
        EXPECT_EQ(tally.withoutLibpng, 1U) << form.text();
    }
}

/// The pixel stream of noise, each block in a chunk of its own. Most are blocks of literals, as in
/// this program's own frames.
std::vector<Bytes> literalChunks(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    Bytes bytes;
    for (std::size_t i = 0; i < rowBytes * rows; ++i) {
        const std::uint32_t noise = below(random, 8) * below(random, 30);
        bytes.push_back(static_cast<std::uint8_t>(i % rowBytes == 0 ? below(random, 5) : noise));
    }
    std::vector<Bytes> chunks = {{0x78, 0x01}};
    const bool joinsFirst = below(random, 2) == 0;
    for (std::size_t from = 0; from < bytes.size();) {
        const std::size_t length =
            std::min<std::size_t>(1800 + below(random, 1200), bytes.size() - from);
        const auto start = bytes.begin() + std::ptrdiff_t(from);
        const Bytes part(start, start + std::ptrdiff_t(length));
        from += length;
        const bool last = from == bytes.size();
        const Bytes block =
            below(random, 8) == 0 ? deflateByZlib(part, last) : literalBlock(part, last);
        if (chunks.size() == 1 && joinsFirst) {
            append(chunks.front(), block);
        } else {
            chunks.push_back(block);
        }
    }
    return chunks;
}

void damage(std::vector<Bytes>& chunks, std::mt19937& random) {
    const std::size_t index = 1 + below(random, chunks.size() - 1);
    Bytes& piece = chunks[index];
    switch (below(random, 6)) {
    case 0:
        piece.resize(below(random, piece.size()));
        break;
    case 1:
        std::swap(piece, chunks[below(random, chunks.size())]);
        break;
    case 2:
        piece.insert(piece.end(), {0, 0, 0, 0xFF, 0xFF});
        break;
    case 3: // The block begins in the chunk before.
        chunks[index - 1].push_back(piece.front());
        piece.erase(piece.begin());
        break;
    default: { // Half of these in the block's header, where a bit changes all codes.
        const std::size_t length =
            std::min<std::size_t>(piece.size(), below(random, 2) == 0 ? 60 : SIZE_MAX);
        piece[below(random, length)] ^= static_cast<std::uint8_t>(1U << below(random, 8));
    }
    }
}

TEST(PngReference, LiteralChunksAreDecodedAlike) {
    Tally tally;
    std::mt19937 random(11);
    const PngForm form{2, 8, false, false};
    for (int i = 0; i < 6000; ++i) {
        const std::uint32_t width = 1 + below(random, 100);
        const std::uint32_t height = 1 + below(random, 12000 / width / 3);
        std::vector<Bytes> chunks = literalChunks(random, form.rowBytes(width), height);
        for (unsigned count = below(random, 3); count > 0; --count) {
            if (chunks.size() > 1) {
                damage(chunks, random);
            }
        }
        Bytes stream;
        for (const Bytes& data : chunks) {
            append(stream, data);
        }
        const std::size_t length = form.rowBytes(width) * height;
        append(chunks.back(), inflateByZlib(stream, length + 1).checksum());
        const Bytes file = pngAround(form, width, height, chunks);
        EXPECT_TRUE(agree(file, anyForm(random), tally)) << i;
    }
    EXPECT_LT(tally.refused, 200U);
    EXPECT_GT(tally.withoutLibpng, 2000U);
    EXPECT_GT(tally.damaged, 1000U);
}

} // namespace
} // namespace vistrane::testing
