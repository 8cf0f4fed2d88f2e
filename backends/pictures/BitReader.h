#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vistrane {

constexpr std::uint32_t lowBits(std::uint64_t bits, unsigned count) {
    return static_cast<std::uint32_t>(bits & ((std::uint64_t{1} << count) - 1));
}

inline std::uint64_t loadLittleEndian(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    return word;
}

/// Reads a deflate stream bit by bit. Without bounds checks: callers make sure that 8 bytes can be
/// read at `in`, and check afterwards how far `in` has moved.
///
/// Everything here is inlined, including into functions that are compiled for newer processors.
/// Decoding loops use a local copy, which the compiler keeps in registers.
struct BitReader {
    const std::uint8_t* in = nullptr;
    /// Bits that are loaded but not used yet; the next one is the lowest. Bits above the first
    /// `bitCount` may already hold the first bits of the byte at `in`.
    std::uint64_t bits = 0;
    unsigned bitCount = 0;

    void startAt(const std::uint8_t* bytes) { *this = {bytes, 0, 0}; }

    /// Makes at least 56 bits available. Reads the 8 bytes at `in`.
    [[gnu::always_inline]] inline void refill() {
        bits |= loadLittleEndian(in) << bitCount;
        in += (63 - bitCount) / 8;
        bitCount |= 56;
    }

    [[gnu::always_inline]] inline void use(unsigned count) {
        bits >>= count;
        bitCount -= count;
    }

    std::uint32_t take(unsigned count) {
        refill();
        const std::uint32_t value = lowBits(bits, count);
        use(count);
        return value;
    }

    /// Skips to the next byte boundary and puts back unused whole bytes: afterwards `in` is the
    /// next byte.
    void alignToByte() { startAt(in - bitCount / 8); }
};

} // namespace vistrane
