#include "backends/pictures/deflate_block.h"

#include <bit>
#include <cstring>

namespace vistrane {

namespace {

constexpr unsigned literalBits = DeflateCodes::literalBits;
constexpr unsigned distanceBits = DeflateCodes::distanceBits;

/// Copies a match with a distance below 8. Computes each word from the previous one, because
/// reading bytes that were just written stalls the processor.
inline void copyOverlapping(std::uint8_t* to, std::size_t distance, std::size_t length) {
    std::uint8_t first[8];
    const std::uint8_t* from = to - distance;
    for (std::size_t i = 0, k = 0; i < 8; ++i) {
        first[i] = from[k];
        k = k + 1 == distance ? 0 : k + 1;
    }
    std::uint64_t word = loadLittleEndian(first);
    const std::size_t shift = 8 * (8 % distance);
    for (std::uint8_t* end = to + length; to < end; to += 8) {
        std::uint64_t stored = word;
        if constexpr (std::endian::native == std::endian::big) {
            stored = __builtin_bswap64(stored);
        }
        std::memcpy(to, &stored, 8);
        // 8 % distance is below 4, so `word` holds twice that many bytes.
        const std::uint64_t rest = word >> shift;
        word = shift == 0 ? word : rest | rest << (64 - shift);
    }
}

template <std::size_t Step>
inline void copyBy(std::uint8_t* to, std::size_t distance, std::size_t length) {
    const std::uint8_t* from = to - distance;
    for (std::uint8_t* end = to + length; to < end; to += Step, from += Step) {
        std::memcpy(to, from, Step);
    }
}

/// May write up to 15 bytes more than `length`.
inline void copyMatch(std::uint8_t* to, std::size_t distance, std::size_t length) {
    if (distance >= 16) {
        copyBy<16>(to, distance, length);
    } else if (distance >= 8) {
        copyBy<8>(to, distance, length);
    } else if (distance == 1) {
        std::memset(to, to[-1], length);
    } else {
        copyOverlapping(to, distance, length);
    }
}

/// The state that changes in every iteration. Separate from the caller's object, so that the
/// compiler keeps it in registers.
struct Loop {
    BitReader reader;
    std::uint8_t* out;

    [[gnu::always_inline]] inline DeflateEntry find(const DeflateEntry* literals) const {
        return literals[lowBits(reader.bits, literalBits)];
    }

    [[gnu::always_inline]] inline void put(DeflateEntry entry) {
        out[0] = static_cast<std::uint8_t>(entry >> 16);
        out[1] = static_cast<std::uint8_t>(entry >> 24);
        out += entry >> 8 & 3U;
        reader.use(entry & 31U);
    }

    /// The value of an entry including its extra bits.
    [[gnu::always_inline]] inline std::uint32_t value(DeflateEntry entry) {
        const std::uint32_t extra = lowBits(reader.bits, entry & 31U) >> (entry >> 8 & 15U);
        reader.use(entry & 31U);
        return (entry >> 16) + extra;
    }

    [[gnu::always_inline]] inline DeflateEntry inSubtable(const DeflateEntry* table,
                                                          DeflateEntry entry) {
        reader.use(entry & 31U);
        return table[(entry >> 16) + lowBits(reader.bits, entry >> 8 & 15U)];
    }

    [[gnu::always_inline]] inline DeflateBlockState run(const DeflateBlock& block,
                                                        const DeflateCodes& codes) {
        const DeflateEntry* const literals = codes.literals.data();
        const DeflateEntry* const distances = codes.distances.data();
        const std::uint8_t* const window = block.window;
        const std::uint8_t* const inLimit = block.inLimit;
        const std::uint8_t* const outLimit = block.outLimit;
        reader.refill();
        DeflateEntry entry = find(literals);
        while (reader.in < inLimit && out < outLimit) {
            // Four lookups use up 44 of at least 56 bits.
            if ((entry & isLiteral) != 0) {
                put(entry);
                entry = find(literals);
                if ((entry & isLiteral) != 0) {
                    put(entry);
                    entry = find(literals);
                    if ((entry & isLiteral) != 0) {
                        put(entry);
                        entry = find(literals);
                        if ((entry & isLiteral) != 0) {
                            put(entry);
                            reader.refill();
                            entry = find(literals);
                            continue;
                        }
                    }
                }
                reader.refill();
            }
            // A length and a distance have at most 48 bits.
            if ((entry & isRare) != 0) {
                if ((entry & isSubtable) != 0) {
                    entry = inSubtable(literals, entry);
                }
                if ((entry & isLiteral) != 0) {
                    put(entry);
                    reader.refill();
                    entry = find(literals);
                    continue;
                }
                if ((entry & isRare) != 0) {
                    reader.use(entry & 31U);
                    return (entry & isBlockEnd) != 0 ? DeflateBlockState::Ended
                                                     : DeflateBlockState::Invalid;
                }
            }
            const std::uint32_t length = value(entry);
            entry = distances[lowBits(reader.bits, distanceBits)];
            if ((entry & isSubtable) != 0) {
                entry = inSubtable(distances, entry);
            }
            if ((entry & isRare) != 0) {
                return DeflateBlockState::Invalid;
            }
            const std::uint32_t distance = value(entry);
            if (distance > static_cast<std::size_t>(out - window)) {
                return DeflateBlockState::Invalid;
            }
            reader.refill();
            entry = find(literals);
            copyMatch(out, distance, length);
            out += length;
        }
        return DeflateBlockState::More;
    }
};

[[gnu::always_inline]] inline DeflateBlockState decode(DeflateBlock& block,
                                                       const DeflateCodes& codes) {
    Loop loop{block.reader, block.out};
    const DeflateBlockState state = loop.run(block, codes);
    block.reader = loop.reader;
    block.out = loop.out;
    return state;
}

DeflateBlockState decodeOnAnyProcessor(DeflateBlock& block, const DeflateCodes& codes) {
    return decode(block, codes);
}

#if defined(__x86_64__)
/// BMI2 shifts take their count from any register and do not change the flags.
__attribute__((target("bmi,bmi2"))) DeflateBlockState decodeWithBmi2(DeflateBlock& block,
                                                                     const DeflateCodes& codes) {
    return decode(block, codes);
}
#endif

using Decode = DeflateBlockState (*)(DeflateBlock&, const DeflateCodes&);

Decode chooseDecode() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2")) {
        return decodeWithBmi2;
    }
#endif
    return decodeOnAnyProcessor;
}

} // namespace

DeflateBlockState decodeBlock(DeflateBlock& block, const DeflateCodes& codes) {
    static const Decode chosen = chooseDecode();
    return chosen(block, codes);
}

} // namespace vistrane
