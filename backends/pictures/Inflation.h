#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "backends/pictures/ByteArray.h"

namespace vistrane {

/// The data of the IDAT chunks of a PNG file, one after the other.
class ImageData {
public:
    /// `chunks`: the chunks with their frames, without a gap; `readPngHeader` has checked them.
    explicit ImageData(std::span<const std::uint8_t> chunks) : chunks_(chunks) {}

    /// Copies the next bytes, as many as there are and at most `room`; returns how many.
    std::size_t read(std::uint8_t* to, std::size_t room);

    /// How many bytes have been read or passed over.
    std::size_t position() const { return position_; }
    void passOver(std::size_t length);

    /// What comes next and lies in one chunk; nothing at the end.
    std::span<const std::uint8_t> restOfChunk();
    /// How many bytes of the file come after the chunk at hand, at least.
    std::size_t behindChunk() const { return chunks_.size(); }

private:
    bool findData();

    std::span<const std::uint8_t> chunks_;
    std::size_t position_ = 0;
    /// What is left of the chunk at hand.
    std::span<const std::uint8_t> data_;
};

/// Compressed bytes bit by bit, and the codes of the block at hand. Whoever uses it sees to it that
/// there are bytes to read.
struct DeflateReader {
    static constexpr unsigned literalBits = 11;
    static constexpr unsigned distanceBits = 8;
    /// What a complete code of 288 or 32 symbols and at most 15 bits needs with its subtables.
    static constexpr std::size_t literalEntries = 2342;
    static constexpr std::size_t distanceEntries = 402;

    void startAt(const std::uint8_t* bytes) {
        in = bytes;
        bits = 0;
        bitCount = 0;
    }

    /// Makes sure of 56 bits; reads the 8 bytes at `in`.
    void refill();
    std::uint32_t takeBits(unsigned count);
    /// On to the next whole byte, which is then the one at `in`.
    void returnWholeBytes();

    /// The head of a block with codes of its own. It has 1024 bytes at most. False when it is
    /// wrong.
    bool readCodes();
    bool useFixedCodes();

    const std::uint8_t* in = nullptr;
    /// The bits taken from `in` and not used yet, the next one lowest. Above the first `bitCount`
    /// there may be the first bits of what is at `in`.
    std::uint64_t bits = 0;
    unsigned bitCount = 0;

    std::array<std::uint8_t, 288 + 32> codeLengths{};
    std::array<std::uint32_t, literalEntries> literalTable{};
    std::array<std::uint32_t, distanceEntries> distanceTable{};

private:
    bool buildCodes(std::size_t literals, std::size_t distances);
};

/// Decompresses a PNG file's pixel stream, a stretch at a time: the next stretch goes through the
/// caches while it is turned into pixels, and the memory taken does not grow with the picture.
///
/// Chunks of nothing but literals, as this program's own frames have them, are decompressed two at
/// a time: each code has to wait for the one before it, but not for those of another chunk.
///
/// It is stricter than zlib. A stream that ends well here ends well there, and gives the same
/// bytes. A stream that it gives up on is damaged, or made by rare means: only zlib can tell.
class Inflation {
public:
    enum class Outcome { Going, Ended, GivenUp };

    /// `length`: of the decompressed bytes. `untaken`: how many of them the caller leaves untaken
    /// at most, when it asks for more.
    Inflation(ImageData data, std::size_t length, std::size_t untaken);

    /// Decompresses some more bytes. It has ended when exactly `length` bytes have been made, their
    /// checksum is right and nothing follows.
    Outcome more();

    /// What has not been taken yet; 16 bytes more can be read past its end. Valid until `more`.
    const std::uint8_t* fresh() const { return taken_; }
    std::size_t freshLength() const { return static_cast<std::size_t>(out_ - taken_); }
    void take(std::size_t length) { taken_ += length; }

private:
    enum class Step { Head, Stored, Codes, Checksum, Ended };

    static constexpr std::size_t longestHead = 1024;
    static constexpr std::size_t inputRoom = 16384;

    friend struct InflationLoop;

    void slide();
    void fillInput();
    bool isOverrun() const;

    bool readStreamHead();
    bool readBlockHead();
    bool readStoredHead();
    bool copyStored();
    bool decodeCodes();
    bool decodeTwoChunks();
    bool decodeLiterals(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second);
    bool readChecksum();
    bool goOn();

    ImageData data_;
    std::size_t length_;
    /// Made before the bytes that the window holds.
    std::size_t slidOut_ = 0;

    ByteArray window_;
    std::uint8_t* out_ = nullptr;
    std::uint8_t* outLimit_ = nullptr;
    const std::uint8_t* taken_ = nullptr;

    DeflateReader reader_;
    const std::uint8_t* inEnd_ = nullptr;
    bool drained_ = false;
    Step step_ = Step::Head;
    bool started_ = false;
    bool lastBlock_ = false;
    std::size_t storedLeft_ = 0;
    std::uint32_t checksum_ = 1;

    // Of chunks that are read two at a time.
    ImageData ahead_;
    std::array<DeflateReader, 2> twoReaders_;
    /// From where in the data on: a chunk is tried once, however many blocks it has and however
    /// many empty chunks there are behind it.
    std::size_t nextTry_ = 0;

    std::array<std::uint8_t, inputRoom + longestHead + 128> input_{};
};

} // namespace vistrane
