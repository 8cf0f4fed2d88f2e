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

/// Decompresses the pixel stream of a PNG file (zlib, RFC 1950 and 1951) in parts of about 128 KiB.
/// Each part is still in the caches while it is converted to pixels, and memory does not grow with
/// the picture. Chunks that hold only literals are decompressed two at a time, see
/// literal_chunks.h.
///
/// Stricter than zlib: every stream that is accepted here is accepted by zlib, with the same
/// result. A stream that is refused here is damaged or rare; libpng then decides about it.
///
/// **Why our own.** The fastest library that decompresses in parts is isa-l. With `isal_inflate`
/// instead, loading a picture took longer by these factors (medians of 41 turns, isa-l 2.30):
///
///   our own noise     1.33 to 1.40    screens    1.11 to 1.35
///   libpng's noise    0.90 to 0.97    flat       1.3 to 1.9
///   gradients         1.06 to 1.15    mean       1.23 at 1920 x 1080, 1.30 at 3840 x 2160
///
/// and a veryfast compile took 1.05 times the processor time. It also accepts incomplete codes,
/// which zlib refuses (166 of 1,000,000 random streams), and it does not stop between blocks.
/// libdeflate decompresses only whole pictures, which do not fit into the caches: 1.3 to 2.
///
/// **Reference implementation:** zlib in the tests `Inflation.*`, libpng in `PngReference.*`.
///
/// **Superfluous** once the mean of the rows `load-isal` or `load-libdeflate` of `bench/run`
/// reaches 1 and that library refuses what zlib refuses.
class Inflation {
public:
    enum class Outcome { Going, Ended, Refused };

    /// The work so far. Tests compare it with the length of the stream: streams of empty blocks or
    /// empty chunks must not take longer than others of the same length.
    struct Work {
        /// Block headers, parts of blocks, and pairs of chunks.
        std::size_t steps = 0;
        std::size_t chunksVisited = 0;
    };

    /// `chunks`: the IDAT chunks, see `ImageData`; they outlive this object. `length`: the expected
    /// number of decompressed bytes. `untaken`: the most bytes that the caller leaves untaken when
    /// it calls `more`.
    Inflation(std::span<const std::uint8_t> chunks, std::size_t length, std::size_t untaken);
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;

    /// Decompresses the next part. `Ended`: the stream has exactly `length` bytes, their checksum
    /// is right, and no data follow.
    Outcome more();

    /// The bytes that were not taken yet. 16 bytes past their end can be read too. Valid until the
    /// next `more`.
    const std::uint8_t* fresh() const { return taken_; }
    std::size_t freshLength() const { return static_cast<std::size_t>(out_ - taken_); }
    void take(std::size_t length) { taken_ += length; }

    Work work() const { return {steps_, chunksVisited_}; }

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
    /// The number of decompressed bytes that have left the window.
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
    /// The codes of the current block: `ownCodes_` or the fixed ones.
    const DeflateCodes* codes_ = nullptr;

    /// A second position in the data, ahead of `reader_`, for finding pairs of chunks.
    ImageData ahead_;
    LiteralChunkPair pair_;
    /// No pair is tried before this position in the data: each chunk is tried once, no matter how
    /// many blocks it has or how many empty chunks follow it.
    std::size_t nextTry_ = 0;

    std::array<std::uint8_t, inputRoom + DeflateCodes::longestHeader + 128> input_{};
};

} // namespace vistrane
