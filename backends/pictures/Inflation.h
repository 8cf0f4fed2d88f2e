#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/ImageData.h"
#include "backends/pictures/deflate_block.h"
#include "backends/pictures/literal_chunks.h"

namespace vistrane {

/// Decompresses the pixel stream of a PNG file (zlib, RFC 1950 and 1951) in parts of some 128 KiB:
/// each part is in the caches while it is turned into pixels, and memory does not grow with the
/// picture. Chunks that hold only literals are decompressed two at a time, see literal_chunks.h.
///
/// Stricter than zlib: a stream that ends well here ends well there, with the same bytes. What is
/// refused here is damaged or rare, and libpng decides about it.
///
/// **Why our own.** The fastest library that decompresses in parts is isa-l. With `isal_inflate` in
/// its place a whole load took longer by these factors (medians of 41 turns, isa-l 2.30):
///
///   our own noise     1.33 to 1.40    screens    1.11 to 1.35
///   libpng's noise    0.90 to 0.97    flat       1.3 to 1.9
///   gradients         1.06 to 1.15    mean       1.23 at 1920 x 1080, 1.30 at 3840 x 2160
///
/// and a veryfast compile 1.05 of the processor time. It also accepts incomplete codes, which zlib
/// refuses (166 of 1,000,000 random streams), and it does not stop between blocks. libdeflate
/// decompresses whole pictures only, which leave the caches: 1.3 to 2.
///
/// **Reference implementation:** zlib in the tests `Inflation.*`, libpng in `PngReference.*`.
///
/// **Superfluous** once the rows `load-isal` and `load-libdeflate` of `bench/run` reach 1 in the
/// mean, and the library refuses what zlib refuses.
class Inflation {
public:
    enum class Outcome { Going, Ended, Refused };

    /// What decompressing has cost so far. Tests hold it to the length of the stream: streams of
    /// empty blocks or empty chunks must not take longer than others of the same length.
    struct Work {
        /// Headers of blocks, parts of their contents, pairs of chunks.
        std::size_t steps = 0;
        /// Decoding tables, see `DeflateCodes`.
        std::size_t codesBuilt = 0;
        std::size_t chunksVisited = 0;
    };

    /// `chunks`: the IDAT chunks, see `ImageData`; they must outlive this object. `length`: of the
    /// decompressed bytes. `untaken`: how many bytes the caller leaves untaken at most when it
    /// calls `more`.
    Inflation(std::span<const std::uint8_t> chunks, std::size_t length, std::size_t untaken);
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;

    /// Decompresses the next part. `Ended`: exactly `length` bytes have been made, their checksum
    /// is right and nothing follows it.
    Outcome more();

    /// The bytes not taken yet; 16 bytes more can be read past their end. Valid until `more`.
    const std::uint8_t* fresh() const { return taken_; }
    std::size_t freshLength() const { return static_cast<std::size_t>(out_ - taken_); }
    void take(std::size_t length) { taken_ += length; }

    Work work() const {
        return {steps_, ownCodes_.timesBuilt() + pair_.codesBuilt(), chunksVisited_};
    }

private:
    enum class Step { BlockHeader, Stored, Codes, Checksum };

    static constexpr std::size_t inputRoom = 16384;

    void slide();
    void fillInput();
    bool isOverrun() const;

    bool readStreamHeader();
    bool step();
    bool readBlockHeader();
    bool readStoredHeader();
    bool copyStored();
    bool decodeCodes();
    bool decodeTwoChunks();
    void endBlock();
    bool readChecksum();

    std::size_t steps_ = 0;
    std::size_t chunksVisited_ = 0;
    ImageData data_;
    std::size_t length_;
    /// How many bytes were made before those in the window.
    std::size_t slidOut_ = 0;

    ByteArray window_;
    std::uint8_t* out_ = nullptr;
    std::uint8_t* outLimit_ = nullptr;
    const std::uint8_t* taken_ = nullptr;

    BitReader reader_;
    const std::uint8_t* inEnd_ = nullptr;
    bool drained_ = false;
    bool started_ = false;
    Step step_ = Step::BlockHeader;
    bool lastBlock_ = false;
    std::size_t storedLeft_ = 0;
    std::uint32_t checksum_ = 1;

    DeflateCodes ownCodes_;
    /// Of the current block: its own or the fixed ones.
    const DeflateCodes* codes_ = nullptr;

    /// For chunks that are decoded in pairs: the data again, ahead of `reader_`.
    ImageData ahead_;
    LiteralChunkPair pair_;
    /// The position in the data from which on a pair may be tried: a chunk is tried once, however
    /// many blocks it has and however many empty chunks follow it.
    std::size_t nextTry_ = 0;

    std::array<std::uint8_t, inputRoom + DeflateCodes::longestHeader + 128> input_{};
};

} // namespace vistrane
