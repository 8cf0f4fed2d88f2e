#include "backends/pictures/LiteralBlock.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vistrane {

namespace {

constexpr std::size_t mostSymbols = 288;
constexpr std::size_t endOfBlock = 256;

/// With this limit `Inflation` usually finds two literals in one lookup and never needs a subtable.
/// Longer codes would shrink noise by less than a thousandth.
constexpr unsigned longestLiteral = 11;
constexpr unsigned longestLength = 7;

/// Code lengths are written in another code: 0 to 15 are literal lengths, 16 repeats the last
/// length, 17 and 18 repeat 0.
constexpr std::size_t lengthSymbols = 19;
constexpr std::array<std::uint8_t, lengthSymbols> lengthOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                 11, 4,  12, 3, 13, 2, 14, 1, 15};
/// There are no matches, but some decoders require codes for distances.
constexpr std::size_t distanceSymbols = 2;

/// An upper bound for the header and the end of a block.
constexpr std::size_t headerRoom = 512;

std::uint16_t reversed(unsigned code, unsigned length) {
    unsigned result = 0;
    for (unsigned i = 0; i < length; ++i) {
        result |= (code >> i & 1U) << (length - 1 - i);
    }
    return static_cast<std::uint16_t>(result);
}

/// Calls `assign(symbol, code, length)` for each symbol with its canonical code, whose first bit is
/// the lowest.
template <typename Assign>
void assignCodes(std::span<const std::uint8_t> lengths, const Assign& assign) {
    unsigned code = 0;
    for (unsigned length = 1; length <= 15; ++length) {
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] == length) {
                assign(symbol, reversed(code, length), length);
                ++code;
            }
        }
        code <<= 1U;
    }
}

void storeWord(std::uint8_t* to, std::uint64_t word) {
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    std::memcpy(to, &word, sizeof word);
}

/// Writes bits, the lowest first. May overwrite up to 8 bytes past the end.
class BitWriter {
public:
    explicit BitWriter(std::uint8_t* to) : to_(to) {}

    /// At most 56 bits between two calls of `flush`.
    void put(std::uint64_t bits, unsigned count) {
        bits_ |= bits << count_;
        count_ += count;
    }

    void flush() {
        storeWord(to_, bits_);
        to_ += count_ / 8;
        bits_ >>= count_ / 8 * 8;
        count_ %= 8;
    }

    void putAndFlush(std::uint64_t bits, unsigned count) {
        put(bits, count);
        flush();
    }

    /// Pads to a byte boundary and returns the end.
    std::uint8_t* end() {
        count_ = (count_ + 7) / 8 * 8;
        flush();
        return to_;
    }

private:
    std::uint8_t* to_;
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;
};

/// The header of a block: the lengths of its codes, run-length encoded.
class LengthWriting {
public:
    explicit LengthWriting(std::span<const std::uint8_t> literals) {
        std::copy(literals.begin(), literals.end(), all_.begin());
        std::fill_n(all_.begin() + endOfBlock + 1, distanceSymbols, std::uint8_t{1});
        for (std::size_t at = 0; at < all_.size();) {
            at += addItem(at);
        }
        std::array<std::uint32_t, lengthSymbols> counts{};
        for (std::size_t i = 0; i < itemCount_; ++i) {
            ++counts[items_[i].symbol];
        }
        chooseCodeLengths(counts, longestLength, lengths_);
    }

    void write(BitWriter& out) const {
        std::size_t known = lengthSymbols;
        while (lengths_[lengthOrder[known - 1]] == 0) {
            --known;
        }
        out.put(endOfBlock + 1 - 257, 5);
        out.put(distanceSymbols - 1, 5);
        out.putAndFlush(known - 4, 4);
        for (std::size_t i = 0; i < known; ++i) {
            out.putAndFlush(lengths_[lengthOrder[i]], 3);
        }
        std::array<std::uint16_t, lengthSymbols> codes{};
        assignCodes(lengths_, [&](std::size_t symbol, std::uint16_t code, unsigned) {
            codes[symbol] = code;
        });
        for (std::size_t i = 0; i < itemCount_; ++i) {
            const Item& item = items_[i];
            out.put(codes[item.symbol], lengths_[item.symbol]);
            out.putAndFlush(item.extra, item.extraBits);
        }
    }

private:
    struct Item {
        std::uint8_t symbol = 0;
        std::uint8_t extra = 0;
        std::uint8_t extraBits = 0;
    };

    /// Adds an item for the lengths from `at` on. Returns how many lengths it covers.
    std::size_t addItem(std::size_t at) {
        const std::uint8_t length = all_[at];
        std::size_t times = 1;
        while (at + times < all_.size() && all_[at + times] == length) {
            ++times;
        }
        if (length == 0 && times >= 11) {
            times = std::min<std::size_t>(times, 138);
            return add({18, static_cast<std::uint8_t>(times - 11), 7}, times);
        }
        if (length == 0 && times >= 3) {
            return add({17, static_cast<std::uint8_t>(times - 3), 3}, times);
        }
        const bool repeats = at > 0 && all_[at - 1] == length && times >= 3;
        if (length != 0 && repeats) {
            times = std::min<std::size_t>(times, 6);
            return add({16, static_cast<std::uint8_t>(times - 3), 2}, times);
        }
        return add({length, 0, 0}, 1);
    }

    std::size_t add(Item item, std::size_t times) {
        items_[itemCount_++] = item;
        return times;
    }

    std::array<std::uint8_t, endOfBlock + 1 + distanceSymbols> all_{};
    std::array<Item, endOfBlock + 1 + distanceSymbols> items_{};
    std::size_t itemCount_ = 0;
    std::array<std::uint8_t, lengthSymbols> lengths_{};
};

} // namespace

void chooseCodeLengths(std::span<const std::uint32_t> counts, unsigned limit,
                       std::span<std::uint8_t> lengths) {
    std::array<std::uint16_t, mostSymbols> order{};
    std::size_t used = 0;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        lengths[symbol] = 0;
        if (counts[symbol] > 0) {
            order[used++] = static_cast<std::uint16_t>(symbol);
        }
    }
    std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(used),
              [&](std::uint16_t a, std::uint16_t b) {
                  return counts[a] != counts[b] ? counts[a] < counts[b] : a < b;
              });

    // Each list holds the symbols and the packages (pairs of neighbours in the previous list),
    // sorted by weight.
    std::array<std::uint64_t, 2 * mostSymbols> list{};
    std::array<std::uint64_t, 2 * mostSymbols> next{};
    std::array<std::array<bool, 2 * mostSymbols>, 15> isSymbol{};
    std::size_t length = 0;
    for (unsigned level = 0; level < limit; ++level) {
        const std::size_t pairs = length / 2;
        std::size_t pair = 0;
        std::size_t symbol = 0;
        for (std::size_t i = 0; i < pairs + used; ++i) {
            const bool takesPair =
                symbol == used ||
                (pair < pairs && list[2 * pair] + list[2 * pair + 1] < counts[order[symbol]]);
            isSymbol[level][i] = !takesPair;
            if (takesPair) {
                next[i] = list[2 * pair] + list[2 * pair + 1];
                ++pair;
            } else {
                next[i] = counts[order[symbol++]];
            }
        }
        length = pairs + used;
        std::swap(list, next);
    }
    // The length of a symbol's code is the number of its occurrences in the first items of the last
    // list, alone or in a package.
    std::size_t taken = 2 * used - 2;
    for (unsigned level = limit; level-- > 0;) {
        const auto first = isSymbol[level].begin();
        const auto symbols = static_cast<std::size_t>(
            std::count(first, first + static_cast<std::ptrdiff_t>(taken), true));
        for (std::size_t i = 0; i < symbols; ++i) {
            ++lengths[order[i]];
        }
        taken = 2 * (taken - symbols);
    }
}

LiteralBlock::LiteralBlock(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
    // Four sets of counters, because incrementing the same counter twice in a row stalls.
    std::array<std::array<std::uint32_t, 256>, 4> parts{};
    const std::uint8_t* byte = bytes.data();
    const std::uint8_t* const end = byte + bytes.size();
    for (; end - byte >= 4; byte += 4) {
        ++parts[0][byte[0]];
        ++parts[1][byte[1]];
        ++parts[2][byte[2]];
        ++parts[3][byte[3]];
    }
    for (; byte != end; ++byte) {
        ++parts[0][*byte];
    }
    std::array<std::uint32_t, symbolCount> counts{};
    for (std::size_t value = 0; value < 256; ++value) {
        counts[value] = parts[0][value] + parts[1][value] + parts[2][value] + parts[3][value];
    }
    counts[endOfBlock] = 1;
    // A code needs at least two symbols.
    counts[0] = std::max(counts[0], 1U);
    chooseCodeLengths(counts, longestLiteral, lengths_);
    assignCodes(lengths_, [this](std::size_t symbol, std::uint16_t code, unsigned length) {
        codes_[symbol] = {code, static_cast<std::uint16_t>(length)};
    });
}

std::size_t LiteralBlock::bitsOf(std::span<const std::uint8_t> part) const {
    std::size_t bits = 0;
    for (const std::uint8_t byte : part) {
        bits += lengths_[byte];
    }
    return bits;
}

std::size_t LiteralBlock::room() const {
    return bitsOf(bytes_) / 8 + headerRoom;
}

std::uint8_t* LiteralBlock::write(std::uint8_t* to, bool last) const {
    constexpr unsigned ownCodes = 2;
    BitWriter out(to);
    out.putAndFlush((last ? 1U : 0U) | ownCodes << 1U, 3);
    LengthWriting(lengths_).write(out);

    const std::uint8_t* byte = bytes_.data();
    const std::uint8_t* const end = byte + bytes_.size();
    for (; end - byte >= 4; byte += 4) {
        for (std::size_t i = 0; i < 4; ++i) {
            const Code code = codes_[byte[i]];
            out.put(code.bits, code.length);
        }
        out.flush();
    }
    for (; byte != end; ++byte) {
        out.putAndFlush(codes_[*byte].bits, codes_[*byte].length);
    }
    out.putAndFlush(codes_[endOfBlock].bits, codes_[endOfBlock].length);
    if (last) {
        return out.end();
    }
    out.put(0, 3);
    std::uint8_t* const stored = out.end();
    constexpr std::array<std::uint8_t, 4> noLength = {0, 0, 0xFF, 0xFF};
    std::memcpy(stored, noLength.data(), noLength.size());
    return stored + noLength.size();
}

} // namespace vistrane
