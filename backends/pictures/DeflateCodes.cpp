#include "backends/pictures/DeflateCodes.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vistrane {

namespace {

constexpr unsigned longestCode = 15;
constexpr std::size_t endOfBlock = 256;
/// The entry for bits that are not a code.
constexpr DeflateEntry noCode = isRare;

constexpr DeflateEntry valueEntry(std::uint32_t value, std::uint32_t extraBits) {
    return value << 16 | extraBits;
}

/// The meaning of each symbol. The length of its code is added for each block.
constexpr std::array<DeflateEntry, 288> makeLiteralValues() {
    std::array<DeflateEntry, 288> values{};
    for (std::uint32_t i = 0; i < endOfBlock; ++i) {
        values[i] = valueEntry(i, 0) | isLiteral;
    }
    values[endOfBlock] = isRare | isBlockEnd;
    std::uint32_t length = 3;
    for (std::uint32_t i = 0; i < 28; ++i) {
        const std::uint32_t extra = i < 8 ? 0 : i / 4 - 1;
        values[257 + i] = valueEntry(length, extra);
        length += 1U << extra;
    }
    values[285] = valueEntry(258, 0);
    values[286] = values[287] = noCode;
    return values;
}

constexpr std::array<DeflateEntry, 32> makeDistanceValues() {
    std::array<DeflateEntry, 32> values{};
    std::uint32_t distance = 1;
    for (std::uint32_t i = 0; i < 30; ++i) {
        const std::uint32_t extra = i < 4 ? 0 : i / 2 - 1;
        values[i] = valueEntry(distance, extra);
        distance += 1U << extra;
    }
    values[30] = values[31] = noCode;
    return values;
}

constexpr auto literalValues = makeLiteralValues();
constexpr auto distanceValues = makeDistanceValues();

/// The next code of the same length, or the prefix of the first longer code. Codes are
/// bit-reversed: the first bit of a code is the lowest bit here, so a plain increment does not
/// work. The last code, all ones, has no successor.
std::uint32_t nextCode(std::uint32_t code, unsigned length) {
    const std::uint32_t highestZero = std::bit_floor(code ^ ((1U << length) - 1));
    return (code & (highestZero - 1)) | highestZero;
}

/// Symbols sorted by code length, then by value: the order in which codes are assigned.
struct CodeOrder {
    std::array<std::uint16_t, longestCode + 2> count{};
    std::array<std::uint16_t, 288> symbols{};

    explicit CodeOrder(std::span<const std::uint8_t> lengths) {
        for (const std::uint8_t length : lengths) {
            ++count[length];
        }
        std::array<std::uint16_t, longestCode + 1> next{};
        for (unsigned length = 1; length < longestCode; ++length) {
            next[length + 1] = static_cast<std::uint16_t>(next[length] + count[length]);
        }
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] != 0) {
                symbols[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
            }
        }
        count[0] = 0;
    }

    /// Whether every sequence of bits starts with exactly one code.
    bool isComplete() const {
        std::uint32_t used = 0;
        for (unsigned length = 1; length <= longestCode; ++length) {
            used += static_cast<std::uint32_t>(count[length]) << (longestCode - length);
        }
        return used == 1U << longestCode;
    }

    unsigned longest() const {
        unsigned length = longestCode;
        while (length > 0 && count[length] == 0) {
            --length;
        }
        return length;
    }

    std::size_t symbolCount() const {
        std::size_t sum = 0;
        for (const std::uint16_t some : count) {
            sum += some;
        }
        return sum;
    }
};

DeflateEntry entryOf(DeflateEntry value, unsigned codeBits) {
    if ((value & isLiteral) != 0) {
        return value | 1U << 8 | codeBits;
    }
    // the extra bits are already included
    return (value | codeBits << 8) + codeBits;
}

/// Builds the table of a complete code. The table itself has the codes of at most `tableBits`; the
/// first bits of a longer code lead to a subtable.
void buildTable(const CodeOrder& order, const DeflateEntry* values, DeflateEntry* table,
                unsigned tableBits) {
    const std::uint32_t tableSize = 1U << tableBits;
    const std::uint16_t* symbol = order.symbols.data();
    std::uint32_t code = 0;
    std::uint32_t filled = 1U << std::min(order.longest(), tableBits);
    for (unsigned length = 1; length <= tableBits; ++length) {
        for (unsigned left = order.count[length]; left > 0; --left) {
            const DeflateEntry entry = entryOf(values[*symbol++], length);
            for (std::uint32_t i = code; i < filled; i += 1U << length) {
                table[i] = entry;
            }
            code = nextCode(code, length);
        }
    }
    // Short codes repeat; copying is faster than filling in each entry.
    for (; filled < tableSize; filled *= 2) {
        std::memcpy(table + filled, table, filled * sizeof table[0]);
    }
    std::uint32_t prefix = ~0U;
    std::uint32_t start = 0;
    std::uint32_t end = tableSize;
    for (unsigned length = tableBits + 1; length <= longestCode; ++length) {
        for (unsigned left = order.count[length]; left > 0; --left) {
            if ((code & (tableSize - 1)) != prefix) {
                prefix = code & (tableSize - 1);
                // Codes with the same first bits form a complete code, so they fill a subtable.
                unsigned bits = length - tableBits;
                for (std::uint32_t used = left; used < 1U << bits;) {
                    ++bits;
                    used = used * 2 + order.count[tableBits + bits];
                }
                start = end;
                end += 1U << bits;
                table[prefix] = start << 16 | isRare | isSubtable | bits << 8 | tableBits;
            }
            const DeflateEntry entry = entryOf(values[*symbol++], length - tableBits);
            for (std::uint32_t i = start + (code >> tableBits); i < end;
                 i += 1U << (length - tableBits)) {
                table[i] = entry;
            }
            code = nextCode(code, length);
        }
    }
}

/// Combines two literals into one entry if its bits hold both codes.
void pairLiterals(DeflateEntry* table, unsigned tableBits) {
    // Backwards, because an entry is combined with an earlier one, which must still be a single
    // literal.
    for (std::uint32_t i = 1U << tableBits; i-- > 0;) {
        const DeflateEntry first = table[i];
        const DeflateEntry second = table[i >> (first & 31U)];
        const std::uint32_t bits = (first & 31U) + (second & 31U);
        if ((first & second & isLiteral) != 0 && bits <= tableBits) {
            table[i] = (first & 0xFF0000U) | (second & 0xFF0000U) << 8 | isLiteral | 2U << 8 | bits;
        }
    }
}

/// The table of the code in which a block's code lengths are written. Read with 7 bits.
class LengthCodes {
public:
    static constexpr unsigned tableBits = 7;

    bool read(BitReader& reader, std::size_t count) {
        constexpr std::array<std::uint8_t, 19> places = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                         11, 4,  12, 3, 13, 2, 14, 1, 15};
        std::array<std::uint8_t, 19> lengths{};
        for (std::size_t i = 0; i < count; ++i) {
            lengths[places[i]] = static_cast<std::uint8_t>(reader.take(3));
        }
        const CodeOrder order(lengths);
        if (!order.isComplete()) {
            return false;
        }
        std::array<DeflateEntry, 19> values{};
        for (std::uint32_t i = 0; i < values.size(); ++i) {
            values[i] = valueEntry(i, 0);
        }
        buildTable(order, values.data(), table_.data(), tableBits);
        return true;
    }

    std::uint32_t next(BitReader& reader) const {
        reader.refill();
        const DeflateEntry entry = table_[lowBits(reader.bits, tableBits)];
        reader.use(entry & 31U);
        return entry >> 16;
    }

private:
    std::array<DeflateEntry, 1U << tableBits> table_{};
};

/// Reads the lengths of both codes. A repeat may continue from one to the other.
bool readLengths(BitReader& reader, const LengthCodes& codes, std::span<std::uint8_t> lengths) {
    for (std::size_t known = 0; known < lengths.size();) {
        const std::uint32_t symbol = codes.next(reader);
        if (symbol < 16) {
            lengths[known++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        if (symbol == 16 && known == 0) {
            return false;
        }
        const std::uint8_t repeated = symbol == 16 ? lengths[known - 1] : std::uint8_t{0};
        const std::size_t times = symbol == 16   ? 3 + reader.take(2)
                                  : symbol == 17 ? 3 + reader.take(3)
                                                 : 11 + reader.take(7);
        if (times > lengths.size() - known) {
            return false;
        }
        std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(known), times, repeated);
        known += times;
    }
    return true;
}

} // namespace

thread_local std::size_t DeflateCodes::timesBuilt_ = 0;

bool DeflateCodes::read(BitReader& reader) {
    const std::size_t literalCount = reader.take(5) + 257;
    const std::size_t distanceCount = reader.take(5) + 1;
    const std::size_t lengthCount = reader.take(4) + 4;
    std::array<std::uint8_t, 286 + 30> all{};
    LengthCodes codes;
    if (literalCount > 286 || distanceCount > 30 || !codes.read(reader, lengthCount)) {
        return false;
    }
    const std::span<std::uint8_t> lengths = std::span(all).first(literalCount + distanceCount);
    return readLengths(reader, codes, lengths) && lengths[endOfBlock] != 0 &&
           build(lengths.first(literalCount), lengths.subspan(literalCount));
}

const DeflateCodes& DeflateCodes::fixed() {
    static const DeflateCodes codes = [] {
        std::array<std::uint8_t, 288> literalLengths{};
        std::fill_n(literalLengths.begin(), 288, std::uint8_t{8});
        std::fill_n(literalLengths.begin() + 144, 112, std::uint8_t{9});
        std::fill_n(literalLengths.begin() + 256, 24, std::uint8_t{7});
        std::array<std::uint8_t, 32> distanceLengths{};
        distanceLengths.fill(5);
        DeflateCodes built;
        built.build(literalLengths, distanceLengths);
        return built;
    }();
    return codes;
}

bool DeflateCodes::build(std::span<const std::uint8_t> literalLengths,
                         std::span<const std::uint8_t> distanceLengths) {
    ++timesBuilt_;
    const CodeOrder literalOrder(literalLengths);
    const CodeOrder distanceOrder(distanceLengths);
    if (!literalOrder.isComplete()) {
        return false;
    }
    buildTable(literalOrder, literalValues.data(), literals.data(), literalBits);
    pairLiterals(literals.data(), literalBits);

    if (distanceOrder.isComplete()) {
        buildTable(distanceOrder, distanceValues.data(), distances.data(), distanceBits);
        return true;
    }
    // Two incomplete codes are valid: no code at all, in a block without matches, and a single code
    // of one bit, which is 0.
    const std::size_t symbols = distanceOrder.symbolCount();
    std::fill_n(distances.begin(), 1U << distanceBits, noCode);
    if (symbols == 1 && distanceOrder.count[1] == 1) {
        const DeflateEntry entry = entryOf(distanceValues[distanceOrder.symbols[0]], 1);
        for (std::size_t i = 0; i < 1U << distanceBits; i += 2) {
            distances[i] = entry;
        }
        return true;
    }
    return symbols == 0;
}

} // namespace vistrane
