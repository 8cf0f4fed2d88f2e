#include "backends/pictures/literal_chunks.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "backends/pictures/BitReader.h"

namespace vistrane {

namespace {

/// An empty stored block, after its three header bits and the padding.
constexpr std::array<std::uint8_t, 4> emptyStoredBlock = {0, 0, 0xFF, 0xFF};

/// One of the two chunks.
struct Lane {
    const DeflateEntry* codes;
    BitReader reader;
    const std::uint8_t* inEnd;
    std::uint8_t* out;
    const std::uint8_t* outEnd;

    /// An iteration of four lookups reads at most 7 bytes and writes at most 8.
    [[gnu::always_inline]] inline std::ptrdiff_t turns() const {
        return std::min(inEnd - reader.in, outEnd - out) / 8;
    }

    [[gnu::always_inline]] inline DeflateEntry find() const {
        return codes[lowBits(reader.bits, DeflateCodes::literalBits)];
    }

    [[gnu::always_inline]] inline void put(DeflateEntry entry) {
        out[0] = static_cast<std::uint8_t>(entry >> 16);
        out[1] = static_cast<std::uint8_t>(entry >> 24);
        out += entry >> 8 & 3U;
        reader.use(entry & 31U);
    }
};

/// Stops at the first code that is not a short literal, or if an iteration might not fit.
[[gnu::always_inline]] inline void decodeTogether(Lane& a, Lane& b) {
    for (;;) {
        std::ptrdiff_t left = std::min(a.turns(), b.turns());
        if (left <= 0) {
            return;
        }
        for (; left > 0; --left) {
            a.reader.refill();
            b.reader.refill();
            // Four lookups use up 44 of at least 56 bits.
            for (int i = 0; i < 4; ++i) {
                const DeflateEntry entry = a.find();
                const DeflateEntry other = b.find();
                if ((entry & other & isLiteral) == 0) {
                    return;
                }
                a.put(entry);
                b.put(other);
            }
        }
    }
}

/// Decodes up to the end of the block. Returns false if there is a match, or no end.
[[gnu::always_inline]] inline bool decodeRest(Lane& lane) {
    while (lane.reader.in <= lane.inEnd + 8 && lane.outEnd - lane.out >= 2) {
        lane.reader.refill();
        DeflateEntry entry = lane.find();
        if ((entry & isSubtable) != 0) {
            lane.reader.use(entry & 31U);
            entry = lane.codes[(entry >> 16) + lowBits(lane.reader.bits, entry >> 8 & 15U)];
        }
        if ((entry & isLiteral) == 0) {
            lane.reader.use(entry & 31U);
            return (entry & isBlockEnd) != 0;
        }
        lane.put(entry);
    }
    return false;
}

[[gnu::always_inline]] inline bool decodeBoth(Lane& first, Lane& second) {
    Lane a = first;
    Lane b = second;
    decodeTogether(a, b);
    const bool whole = decodeRest(a) && decodeRest(b);
    first = a;
    second = b;
    return whole;
}

bool decodeOnAnyProcessor(Lane& first, Lane& second) {
    return decodeBoth(first, second);
}

#if defined(__x86_64__)
/// BMI2 shifts take their count from any register and do not change the flags.
__attribute__((target("bmi,bmi2"))) bool decodeWithBmi2(Lane& first, Lane& second) {
    return decodeBoth(first, second);
}
#endif

using Decode = bool (*)(Lane&, Lane&);

Decode chooseDecode() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2")) {
        return decodeWithBmi2;
    }
#endif
    return decodeOnAnyProcessor;
}

bool endsWithEmptyBlock(Lane& lane) {
    constexpr std::uint32_t stored = 0;
    if (lane.reader.take(3) != stored) {
        return false;
    }
    lane.reader.alignToByte();
    return lane.inEnd - lane.reader.in == std::ssize(emptyStoredBlock);
}

} // namespace

bool mayBeLiteralChunk(std::span<const std::uint8_t> data) {
    // Not the last block, with its own codes, of 257 symbols: no match lengths.
    constexpr std::uint8_t literalsOnly = 4;
    return data.size() >= DeflateCodes::longestHeader && data.front() == literalsOnly &&
           std::equal(emptyStoredBlock.begin(), emptyStoredBlock.end(),
                      data.end() - emptyStoredBlock.size());
}

std::uint8_t* LiteralChunkPair::decode(std::span<const std::uint8_t> first,
                                       std::span<const std::uint8_t> second, std::uint8_t* out,
                                       std::size_t room) {
    static const Decode chosen = chooseDecode();
    std::uint8_t* const middle = out + room / 2;
    Lane one{codes_[0].literals.data(), {}, first.data() + first.size(), out, middle};
    Lane other{
        codes_[1].literals.data(), {}, second.data() + second.size(), middle, middle + room / 2};
    one.reader.startAt(first.data());
    other.reader.startAt(second.data());
    one.reader.take(3);
    other.reader.take(3);
    if (!codes_[0].read(one.reader) || !codes_[1].read(other.reader) || !chosen(one, other) ||
        !endsWithEmptyBlock(one) || !endsWithEmptyBlock(other)) {
        return nullptr;
    }
    const auto length = static_cast<std::size_t>(other.out - middle);
    std::memmove(one.out, middle, length);
    return one.out + length;
}

} // namespace vistrane
