#include "tests/backends/pictures/DeflateSamples.h"

#include <zlib.h>

#include <algorithm>
#include <numeric>

#include "backends/pictures/LiteralBlock.h"

namespace vistrane::testing {

namespace {

constexpr std::size_t endOfBlock = 256;

/// What a length or distance symbol stands for: the least value and its extra bits.
struct Range {
    std::size_t first = 0;
    unsigned bits = 0;
};

/// Symbols beyond the last valid one are made to look like it.
Range lengthRange(std::size_t symbol) {
    std::size_t length = 3;
    for (std::size_t i = 257; i < symbol; ++i) {
        length += std::size_t{1} << (i < 265 ? 0 : (i - 261) / 4);
    }
    return symbol >= 285 ? Range{258, 0}
                         : Range{length, symbol < 265 ? 0 : unsigned(symbol - 261) / 4};
}

Range distanceRange(std::size_t symbol) {
    symbol = std::min<std::size_t>(symbol, 29);
    const unsigned bits = symbol < 4 ? 0 : unsigned(symbol) / 2 - 1;
    return {symbol < 4 ? symbol + 1 : ((2 + symbol % 2) << bits) + 1, bits};
}

/// The last symbol from `first` to `last` that stands for at most `value`.
template <typename RangeOf>
std::size_t symbolOf(std::size_t value, std::size_t first, std::size_t last,
                     const RangeOf& rangeOf) {
    while (last > first && rangeOf(last).first > value) {
        --last;
    }
    return last;
}

bool oneIn(std::mt19937& random, std::size_t count) {
    return below(random, count) == 0;
}

} // namespace

DeflateCode::DeflateCode(std::vector<std::uint8_t> given) : lengths(std::move(given)) {
    std::array<unsigned, 17> next{};
    for (const std::uint8_t length : lengths) {
        next[length + 1U] += length > 0 ? 1 : 0;
    }
    for (unsigned length = 1; length < 17; ++length) {
        next[length] = (next[length] + next[length - 1]) * 2;
    }
    for (const std::uint8_t length : lengths) {
        codes.push_back(length > 0 ? next[length]++ : 0);
    }
}

void DeflateWriter::putBits(std::size_t bits, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        held_ |= (bits >> i & 1U) << heldCount_;
        if (++heldCount_ == 8) {
            align();
        }
    }
}

void DeflateWriter::align() {
    if (heldCount_ > 0) {
        stream_.push_back(static_cast<std::uint8_t>(held_));
    }
    held_ = 0;
    heldCount_ = 0;
}

/// A code begins with its highest bit.
void DeflateWriter::putSymbol(const DeflateCode& code, std::size_t symbol) {
    for (unsigned i = code.lengths[symbol]; i-- > 0;) {
        putBits(code.codes[symbol] >> i, 1);
    }
}

void DeflateWriter::stored(std::span<const std::uint8_t> bytes, bool last) {
    putBits(last ? 1 : 0, 3);
    align();
    putBits(bytes.size(), 16);
    putBits(~bytes.size(), 16);
    append(stream_, bytes);
    append(made_, bytes);
}

void DeflateWriter::beginFixed(bool last) {
    std::vector<std::uint8_t> lengths(288, 8);
    std::fill(lengths.begin() + 144, lengths.begin() + 256, std::uint8_t{9});
    std::fill(lengths.begin() + 256, lengths.begin() + 280, std::uint8_t{7});
    literals_ = DeflateCode(lengths);
    distances_ = DeflateCode(std::vector<std::uint8_t>(32, 5));
    putBits(last ? 3 : 2, 3);
}

void DeflateWriter::beginOwn(bool last, const DeflateCode& literals, const DeflateCode& distances) {
    literals_ = literals;
    distances_ = distances;
    putBits(last ? 5 : 4, 3);
    putBits(literals.lengths.size() - 257, 5);
    putBits(distances.lengths.size() - 1, 5);
    std::vector<std::uint8_t> lengths = literals.lengths;
    lengths.insert(lengths.end(), distances.lengths.begin(), distances.lengths.end());
    putLengths(lengths);
}

void DeflateWriter::putLengths(const std::vector<std::uint8_t>& lengths) {
    constexpr std::array<std::uint8_t, 19> places = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::vector<std::uint8_t> codeLengths(19, 5);
    std::fill(codeLengths.begin() + 6, codeLengths.end(), std::uint8_t{4});
    const DeflateCode code(codeLengths);
    putBits(places.size() - 4, 4);
    for (const std::uint8_t place : places) {
        putBits(code.lengths[place], 3);
    }
    struct Repeat {
        std::size_t symbol, least, most;
        unsigned bits;
        bool isPossible;
    };
    for (std::size_t i = 0; i < lengths.size();) {
        const auto start = lengths.begin() + std::ptrdiff_t(i);
        const auto other = std::find_if(start, lengths.end(), [&](auto l) { return l != *start; });
        const auto same = std::size_t(other - start);
        const Repeat repeats[] = {
            {18, 11, 138, 7, *start == 0},
            {17, 3, 10, 3, *start == 0},
            {16, 3, 6, 2,
             i > 0 && *(start - std::min<std::ptrdiff_t>(1, std::ptrdiff_t(i))) == *start}};
        const auto* repeat = std::find_if(std::begin(repeats), std::end(repeats),
                                          [&](auto& r) { return r.isPossible && same >= r.least; });
        if (repeat == std::end(repeats)) {
            putSymbol(code, lengths[i++]);
            continue;
        }
        const std::size_t times = std::min(same, repeat->most);
        putSymbol(code, repeat->symbol);
        putBits(times - repeat->least, repeat->bits);
        i += times;
    }
}

void DeflateWriter::literal(std::uint8_t byte) {
    putSymbol(literals_, byte);
    made_.push_back(byte);
}

void DeflateWriter::match(std::size_t length, std::size_t distance) {
    const std::size_t symbol = symbolOf(length, endOfBlock + 1, 285, lengthRange);
    const std::size_t farSymbol = symbolOf(distance, 0, 29, distanceRange);
    matchOf(symbol, length - lengthRange(symbol).first, farSymbol,
            distance - distanceRange(farSymbol).first);
}

void DeflateWriter::matchOf(std::size_t symbol, std::size_t more, std::size_t farSymbol,
                            std::size_t farther) {
    putSymbol(literals_, symbol);
    putBits(more, lengthRange(symbol).bits);
    putSymbol(distances_, farSymbol);
    putBits(farther, distanceRange(farSymbol).bits);
    const std::size_t distance = distanceRange(farSymbol).first + farther;
    for (std::size_t i = lengthRange(symbol).first + more; i > 0; --i) {
        made_.push_back(made_[made_.size() - distance]);
    }
}

Bytes DeflateWriter::finish() {
    align();
    append(stream_, Inflated{made_}.checksum());
    return stream_;
}

DeflateCode randomCode(std::mt19937& random, std::size_t symbols, std::size_t count,
                       const std::vector<std::size_t>& needed, unsigned longest) {
    // One leaf, which is split again and again: in half of the codes mostly the deepest one.
    std::vector<std::uint8_t> leaves = {0};
    const bool deep = oneIn(random, 2);
    while (leaves.size() < count) {
        auto leaf = deep && !oneIn(random, 8)
                        ? leaves.end() - 1
                        : leaves.begin() + std::ptrdiff_t(below(random, leaves.size()));
        if (*leaf == longest) {
            leaf = std::min_element(leaves.begin(), leaves.end());
        }
        const std::uint8_t length = ++*leaf;
        leaves.push_back(length);
    }
    std::shuffle(leaves.begin(), leaves.end(), random);
    std::vector<std::size_t> order(symbols);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), random);
    for (std::size_t i = 0; i < needed.size(); ++i) {
        std::swap(order[i], *std::find(order.begin(), order.end(), needed[i]));
    }
    std::vector<std::uint8_t> lengths(symbols, 0);
    for (std::size_t i = 0; i < count; ++i) {
        lengths[order[i]] = leaves[i];
    }
    return DeflateCode(lengths);
}

namespace {

/// The filters that a row can have, so that rows can begin in every block.
const std::vector<std::size_t> neededSymbols = {endOfBlock, 0, 1, 2, 3, 4};

/// None, one of a single bit, or a complete code.
DeflateCode randomDistances(std::mt19937& random) {
    const std::size_t symbols = 1 + below(random, 30);
    const std::size_t kind = below(random, 6);
    if (kind < 2 || symbols == 1) {
        std::vector<std::uint8_t> lengths(symbols, 0);
        lengths[below(random, symbols)] = kind == 0 ? 0 : 1;
        return DeflateCode(lengths);
    }
    return randomCode(random, symbols, 2 + below(random, symbols - 1), {});
}

/// A symbol of the code from `first` up to, not including, `last`. `last` if there is none.
std::size_t anySymbol(std::mt19937& random, const DeflateCode& code, std::size_t first,
                      std::size_t last) {
    const std::size_t start = below(random, last - first);
    for (std::size_t i = 0; i < last - first; ++i) {
        const std::size_t symbol = first + (start + i) % (last - first);
        if (code.has(symbol)) {
            return symbol;
        }
    }
    return last;
}

/// A match that begins within the bytes made and ends within the row. False when the first try is
/// none.
bool putRandomMatch(std::mt19937& random, DeflateWriter& writer, std::size_t room) {
    const std::size_t most = oneIn(random, 2) ? 265 : 286;
    const std::size_t symbol = anySymbol(random, writer.literals(), 257, most);
    const std::size_t farSymbol = anySymbol(random, writer.distances(), 0, 30);
    const std::size_t more = below(random, std::size_t{1} << lengthRange(symbol).bits);
    const std::size_t farther = below(random, std::size_t{1} << distanceRange(farSymbol).bits);
    if (symbol == most || farSymbol == 30 || lengthRange(symbol).first + more > room ||
        distanceRange(farSymbol).first + farther > writer.made().size()) {
        return false;
    }
    writer.matchOf(symbol, more, farSymbol, farther);
    return true;
}

void putRandomSymbols(std::mt19937& random, DeflateWriter& writer, std::size_t rowBytes,
                      std::size_t until) {
    while (writer.made().size() < until) {
        const std::size_t position = writer.made().size() % rowBytes;
        if (position == 0) {
            writer.literal(static_cast<std::uint8_t>(below(random, 5)));
        } else if (!oneIn(random, 2) || !putRandomMatch(random, writer, rowBytes - position)) {
            const std::size_t byte = anySymbol(random, writer.literals(), 0, 256);
            writer.literal(static_cast<std::uint8_t>(byte));
        }
    }
    writer.end();
}

void putRandomBlock(std::mt19937& random, DeflateWriter& writer, bool last, std::size_t rowBytes,
                    std::size_t until) {
    const std::size_t kind = below(random, 8);
    if (kind == 0) {
        const Bytes rows = randomRows(random, rowBytes, until);
        writer.stored(std::span(rows).subspan(writer.made().size()), last);
        return;
    }
    if (kind == 1) {
        writer.beginFixed(last);
    } else {
        const std::size_t symbols = 257 + below(random, 30);
        const std::size_t some = 6 + below(random, oneIn(random, 2) ? 20 : symbols - 6);
        const std::size_t count = oneIn(random, 4) ? symbols : some;
        writer.beginOwn(last, randomCode(random, symbols, count, neededSymbols),
                        randomDistances(random));
    }
    putRandomSymbols(random, writer, rowBytes, until);
}

Bytes deflated(const Bytes& bytes, int level, int windowBits, int memory, int strategy, int flush) {
    z_stream zlib{};
    ::deflateInit2(&zlib, level, Z_DEFLATED, windowBits, memory, strategy);
    Bytes stream(::deflateBound(&zlib, bytes.size()) + 16);
    zlib.next_in = const_cast<Bytef*>(bytes.data());
    zlib.avail_in = static_cast<uInt>(bytes.size());
    zlib.next_out = stream.data();
    zlib.avail_out = static_cast<uInt>(stream.size());
    ::deflate(&zlib, flush);
    stream.resize(zlib.total_out);
    ::deflateEnd(&zlib);
    return stream;
}

/// Changes the stream's header, its length or a bit, as often in the header of the first block,
/// where most of the rules are, as anywhere.
void damage(std::mt19937& random, Bytes& stream) {
    const std::size_t kind = below(random, 8);
    if (kind == 0) {
        const auto windowBits = static_cast<unsigned>(below(random, 9));
        const unsigned flags = oneIn(random, 3) ? 0x20 : 0;
        stream[0] = static_cast<std::uint8_t>(windowBits << 4 | (oneIn(random, 5) ? 7U : 8U));
        stream[1] = static_cast<std::uint8_t>(flags + 31 - (stream[0] * 256U + flags) % 31);
    } else if (kind == 1) {
        stream.resize(stream.size() - below(random, 6) + below(random, 6));
    } else {
        const std::size_t within = std::min<std::size_t>(stream.size(), kind < 5 ? 60 : 1U << 20);
        stream[below(random, within)] ^= static_cast<std::uint8_t>(1U << below(random, 8));
    }
}

} // namespace

Bytes randomRows(std::mt19937& random, std::size_t rowBytes, std::size_t length,
                 std::size_t different) {
    Bytes rows(length);
    for (std::size_t i = 0; i < length; ++i) {
        rows[i] = static_cast<std::uint8_t>(below(random, i % rowBytes == 0 ? 5 : different));
    }
    return rows;
}

Bytes randomStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    DeflateWriter writer;
    const std::size_t blocks = 1 + below(random, 3);
    for (std::size_t i = 1; i <= blocks; ++i) {
        const std::size_t left = rowBytes * rows - writer.made().size();
        const std::size_t length = i == blocks ? left : below(random, left + 1);
        putRandomBlock(random, writer, i == blocks, rowBytes, writer.made().size() + length);
    }
    Bytes stream = writer.finish();
    if (!oneIn(random, 4)) {
        return stream;
    }
    for (std::size_t i = 1 + below(random, 2); i > 0; --i) {
        damage(random, stream);
    }
    if (oneIn(random, 2)) {
        const Inflated inflated = inflateByZlib(stream, std::size_t{1} << 20);
        if (inflated.ended) {
            stream.resize(inflated.end);
            append(stream, inflated.checksum());
        }
    }
    return stream;
}

Bytes zlibStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    Bytes raw = randomRows(random, rowBytes, rowBytes * rows, std::size_t{1} << below(random, 9));
    const std::size_t wrong = below(random, 16);
    if (wrong < 2) {
        const std::size_t some = below(random, 40);
        raw.resize(wrong == 0 ? raw.size() + some : raw.size() - std::min(raw.size(), some));
    }
    const int strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    const int level = static_cast<int>(below(random, 10));
    const int windowBits = oneIn(random, 2) ? MAX_WBITS : 9 + static_cast<int>(below(random, 7));
    const int memory = 1 + static_cast<int>(below(random, 9));
    return deflated(raw, level, windowBits, memory, strategies[below(random, 5)], Z_FINISH);
}

Bytes matchStream(std::mt19937& random, std::span<const Match> matches) {
    DeflateWriter writer;
    writer.beginFixed(true);
    for (const Match& match : matches) {
        for (std::size_t i = 0; i < match.literals; ++i) {
            writer.literal(static_cast<std::uint8_t>(random()));
        }
        writer.match(match.length, match.distance);
    }
    writer.end();
    return writer.finish();
}

Bytes Inflated::checksum() const {
    Bytes sum;
    appendNumber(sum, static_cast<std::uint32_t>(
                          ::adler32(1, bytes.data(), static_cast<uInt>(bytes.size()))));
    return sum;
}

Inflated inflateByZlib(std::span<const std::uint8_t> stream, std::size_t limit) {
    Inflated inflated;
    inflated.bytes.resize(limit);
    const auto data = stream.subspan(std::min<std::size_t>(stream.size(), 2));
    z_stream zlib{};
    ::inflateInit2(&zlib, -MAX_WBITS);
    zlib.next_in = const_cast<Bytef*>(data.data());
    zlib.avail_in = static_cast<uInt>(data.size());
    zlib.next_out = inflated.bytes.data();
    zlib.avail_out = static_cast<uInt>(limit);
    inflated.ended = ::inflate(&zlib, Z_FINISH) == Z_STREAM_END;
    inflated.bytes.resize(zlib.total_out);
    inflated.end = 2 + zlib.total_in;
    ::inflateEnd(&zlib);
    return inflated;
}

Bytes literalBlock(std::span<const std::uint8_t> bytes, bool last) {
    const LiteralBlock block(bytes);
    Bytes data(block.room(), 0xA5);
    data.resize(static_cast<std::size_t>(block.write(data.data(), last) - data.data()));
    return data;
}

std::vector<Bytes> literalBlocks(std::span<const std::uint8_t> bytes, std::size_t length) {
    std::vector<Bytes> blocks;
    for (std::size_t from = 0; from < bytes.size(); from += length) {
        const std::size_t left = bytes.size() - from;
        blocks.push_back(literalBlock(bytes.subspan(from, std::min(length, left)), left <= length));
    }
    blocks.front().insert(blocks.front().begin(), {0x78, 0x01});
    append(blocks.back(), Inflated{{bytes.begin(), bytes.end()}}.checksum());
    return blocks;
}

Bytes deflateByZlib(const Bytes& bytes, bool last) {
    return deflated(bytes, 6, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY, last ? Z_FINISH : Z_SYNC_FLUSH);
}

} // namespace vistrane::testing
