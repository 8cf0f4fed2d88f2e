#include "tests/backends/pictures/DeflateSamples.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace vistrane::testing {

namespace {

constexpr std::size_t endOfBlock = 256;
constexpr std::size_t literalSymbols = 288;
constexpr std::size_t distanceSymbols = 32;

/// Length and distance symbols: what they stand for at least, and their extra bits.
struct Range {
    unsigned first = 0;
    unsigned bits = 0;
};

Range lengthRange(unsigned symbol) {
    unsigned length = 3;
    for (unsigned i = 257; i < symbol; ++i) {
        length += 1U << (i < 265 ? 0 : (i - 261) / 4);
    }
    return symbol >= 285 ? Range{258, 0} : Range{length, symbol < 265 ? 0 : (symbol - 261) / 4};
}

Range distanceRange(unsigned symbol) {
    unsigned distance = 1;
    for (unsigned i = 0; i < symbol; ++i) {
        distance += 1U << (i < 4 ? 0 : i / 2 - 1);
    }
    return symbol >= 30 ? Range{24577, 13} : Range{distance, symbol < 4 ? 0 : symbol / 2 - 1};
}

/// The last symbol from `first` to `last` that stands for at most `value`.
template <typename RangeOf>
unsigned symbolOf(std::size_t value, unsigned first, unsigned last, const RangeOf& rangeOf) {
    unsigned symbol = last;
    while (symbol > first && rangeOf(symbol).first > value) {
        --symbol;
    }
    return symbol;
}

struct Code {
    std::vector<std::uint8_t> lengths;
    std::vector<std::uint16_t> codes;

    explicit Code(std::vector<std::uint8_t> given) : lengths(std::move(given)) {
        std::array<unsigned, 17> next{};
        for (const std::uint8_t length : lengths) {
            next[length + 1U] += length > 0 ? 1 : 0;
        }
        for (unsigned length = 1; length < 17; ++length) {
            next[length] = (next[length] + next[length - 1]) * 2;
        }
        for (const std::uint8_t length : lengths) {
            codes.push_back(static_cast<std::uint16_t>(length > 0 ? next[length]++ : 0));
        }
        for (std::uint16_t& code : codes) {
            code = static_cast<std::uint16_t>(code & 0x7FFFU);
        }
    }

    bool has(std::size_t symbol) const { return symbol < lengths.size() && lengths[symbol] > 0; }
};

/// Writes one stream and keeps what it stands for.
class StreamWriting {
public:
    StreamWriting(std::mt19937& random, std::size_t rowBytes, std::size_t rows)
        : random_(random), rowBytes_(rowBytes), length_(rowBytes * rows), broken_(oneIn(4)) {}

    Bytes write() {
        stream_ = {0x78, 0x01};
        breakSometimes([&] { changeHead(); });
        const std::size_t blocks = 1 + below(3);
        for (std::size_t i = 0; i < blocks; ++i) {
            const bool last = i + 1 == blocks;
            const std::size_t until = last ? length_ : made_.size() + below(left() + 1);
            writeBlock(last, until);
        }
        finish();
        return stream_;
    }

    Bytes writeOneMatch(std::size_t symbol, std::size_t farSymbol) {
        broken_ = false;
        stream_ = {0x78, 0x01};
        putBits(3, 3);
        const Code literals = fixedLiterals();
        const Code distances(std::vector<std::uint8_t>(distanceSymbols, 5));
        const Range lengths = lengthRange(static_cast<unsigned>(symbol));
        while (made_.size() + lengths.first < length_) {
            writeLiteral(literals);
        }
        putSymbol(literals, symbol);
        putBits(0, lengths.bits);
        putSymbol(distances, farSymbol);
        const Range far = distanceRange(static_cast<unsigned>(farSymbol));
        putBits(0, far.bits);
        for (unsigned i = 0; i < lengths.first; ++i) {
            make(made_[made_.size() - far.first]);
        }
        putSymbol(literals, endOfBlock);
        finish();
        return stream_;
    }

    Bytes writeMatches(std::span<const Match> matches) {
        broken_ = false;
        stream_ = {0x78, 0x01};
        putBits(3, 3);
        const Code literals = fixedLiterals();
        const Code distances(std::vector<std::uint8_t>(distanceSymbols, 5));
        for (const Match& match : matches) {
            for (std::size_t i = 0; i < match.literals; ++i) {
                make(static_cast<std::uint8_t>(random_()));
                putSymbol(literals, made_.back());
            }
            const unsigned symbol = symbolOf(match.length, endOfBlock + 1, 285, lengthRange);
            putSymbol(literals, symbol);
            putBits(match.length - lengthRange(symbol).first, lengthRange(symbol).bits);
            const unsigned farSymbol = symbolOf(match.distance, 0, 29, distanceRange);
            putSymbol(distances, farSymbol);
            putBits(match.distance - distanceRange(farSymbol).first, distanceRange(farSymbol).bits);
            for (std::size_t i = 0; i < match.length; ++i) {
                make(made_[made_.size() - match.distance]);
            }
        }
        putSymbol(literals, endOfBlock);
        finish();
        return stream_;
    }

private:
    std::size_t below(std::size_t limit) { return limit > 0 ? random_() % limit : 0; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::size_t left() const { return length_ - std::min(length_, made_.size()); }

    /// Of what can be wrong, something or other is, in a broken stream.
    template <typename Break>
    void breakSometimes(const Break& how) {
        if (broken_ && oneIn(6)) {
            how();
        }
    }

    void changeHead() {
        const unsigned method = static_cast<unsigned>(below(9)) << 4 | 8U;
        const unsigned flags = oneIn(3) ? 0x20 : 0;
        stream_[0] = static_cast<std::uint8_t>(oneIn(5) ? random_() : method);
        const unsigned rest = (stream_[0] * 256U + flags) % 31;
        stream_[1] = static_cast<std::uint8_t>(flags + (rest > 0 && !oneIn(9) ? 31 - rest : 0));
    }

    void putBits(std::size_t bits, unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            held_ |= (bits >> i & 1U) << heldCount_;
            if (++heldCount_ == 8) {
                align();
            }
        }
    }

    void align() {
        if (heldCount_ > 0) {
            stream_.push_back(static_cast<std::uint8_t>(held_));
        }
        held_ = 0;
        heldCount_ = 0;
    }

    /// A code begins with its highest bit.
    void putSymbol(const Code& code, std::size_t symbol) {
        for (unsigned i = code.lengths[symbol]; i-- > 0;) {
            putBits(code.codes[symbol] >> i, 1);
        }
    }

    void writeBlock(bool last, std::size_t until) {
        putBits(last ? 1 : 0, 1);
        std::size_t kind = below(8);
        kind = kind < 2 ? kind : 2;
        breakSometimes([&] { kind = 3; });
        putBits(kind, 2);
        if (kind == 0) {
            writeStored(until);
        } else if (kind == 1) {
            writeSymbols(fixedLiterals(), Code(std::vector<std::uint8_t>(distanceSymbols, 5)),
                         until);
        } else {
            writeOwnCodes(until);
        }
    }

    void writeStored(std::size_t until) {
        align();
        const std::size_t length = until - std::min(until, made_.size());
        std::size_t opposite = ~length;
        breakSometimes([&] { opposite ^= std::size_t{1} << below(16); });
        putBits(length, 16);
        putBits(opposite, 16);
        for (std::size_t i = 0; i < length; ++i) {
            make(wantedByte());
            putBits(made_.back(), 8);
        }
    }

    static Code fixedLiterals() {
        std::vector<std::uint8_t> lengths(literalSymbols, 8);
        std::fill(lengths.begin() + 144, lengths.begin() + 256, std::uint8_t{9});
        std::fill(lengths.begin() + 256, lengths.begin() + 280, std::uint8_t{7});
        return Code(lengths);
    }

    /// The lengths of a complete code: one leaf, split again and again.
    std::vector<std::uint8_t> leaves(std::size_t count, std::uint8_t longest) {
        std::vector<std::uint8_t> lengths = {0};
        const bool deep = oneIn(2);
        while (lengths.size() < count) {
            const std::size_t at = deep && !oneIn(8) ? lengths.size() - 1 : below(lengths.size());
            if (lengths[at] < longest) {
                lengths.push_back(++lengths[at]);
            } else {
                const auto shortest = std::min_element(lengths.begin(), lengths.end());
                const auto length = ++*shortest;
                lengths.push_back(length);
            }
        }
        return lengths;
    }

    /// A code of `count` of the first `symbols` symbols, those of `needed` among them.
    std::vector<std::uint8_t> ownCode(std::size_t symbols, std::size_t count,
                                      std::vector<std::size_t> needed, std::uint8_t longest) {
        std::vector<std::size_t> order(symbols);
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::shuffle(order.begin(), order.end(), random_);
        for (std::size_t i = 0; i < needed.size(); ++i) {
            std::swap(order[i], *std::find(order.begin(), order.end(), needed[i]));
        }
        std::vector<std::uint8_t> lengths = leaves(count, longest);
        std::shuffle(lengths.begin(), lengths.end(), random_);
        std::vector<std::uint8_t> bySymbol(symbols, 0);
        for (std::size_t i = 0; i < count; ++i) {
            bySymbol[order[i]] = lengths[i];
        }
        breakSometimes(
            [&] { bySymbol[order[below(symbols)]] = std::uint8_t(below(longest + 1U)); });
        return bySymbol;
    }

    std::vector<std::uint8_t> ownLiterals() {
        std::size_t symbols = 257 + below(30);
        breakSometimes([&] { symbols = 287 + below(2); });
        const std::size_t count =
            oneIn(4) ? symbols : std::max<std::size_t>(6, 2 + below(oneIn(2) ? 20 : symbols - 2));
        return ownCode(symbols, count, {endOfBlock, 0, 1, 2, 3, 4}, 15);
    }

    std::vector<std::uint8_t> ownDistances() {
        std::size_t symbols = 1 + below(30);
        breakSometimes([&] { symbols = 31 + below(2); });
        if (oneIn(6)) {
            return std::vector<std::uint8_t>(symbols, 0);
        }
        if (oneIn(6) || symbols == 1) {
            std::vector<std::uint8_t> lengths(symbols, 0);
            lengths[below(symbols)] = 1;
            breakSometimes([&] { lengths[below(symbols)] = 2; });
            return lengths;
        }
        return ownCode(symbols, 2 + below(symbols - 1), {}, 15);
    }

    void writeOwnCodes(std::size_t until) {
        const Code literals(ownLiterals());
        const Code distances(ownDistances());
        putBits(literals.lengths.size() - 257, 5);
        putBits(distances.lengths.size() - 1, 5);
        writeLengths(literals, distances);
        writeSymbols(literals, distances, until);
    }

    void writeLengths(const Code& literals, const Code& distances) {
        constexpr std::array<std::uint8_t, 19> places = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                         11, 4,  12, 3, 13, 2, 14, 1, 15};
        const Code code(ownCode(19, 19, {}, 7));
        putBits(15, 4);
        for (const std::uint8_t place : places) {
            putBits(code.lengths[place], 3);
        }
        std::vector<std::uint8_t> all = literals.lengths;
        all.insert(all.end(), distances.lengths.begin(), distances.lengths.end());
        for (std::size_t i = 0; i < all.size();) {
            std::size_t same = 1;
            while (i + same < all.size() && all[i + same] == all[i]) {
                ++same;
            }
            i += writeRun(code, all, i, same);
        }
    }

    std::size_t writeRun(const Code& code, const std::vector<std::uint8_t>& all, std::size_t at,
                         std::size_t same) {
        breakSometimes([&] { same += oneIn(20) ? 5 : 0; });
        if (all[at] == 0 && same >= 11 && !oneIn(4)) {
            const std::size_t times = std::min<std::size_t>(same, 138);
            putSymbol(code, 18);
            putBits(times - 11, 7);
            return times;
        }
        if (all[at] == 0 && same >= 3 && !oneIn(4)) {
            const std::size_t times = std::min<std::size_t>(same, 10);
            putSymbol(code, 17);
            putBits(times - 3, 3);
            return times;
        }
        if (at > 0 && all[at - 1] == all[at] && same >= 3 && !oneIn(4)) {
            const std::size_t times = std::min<std::size_t>(same, 6);
            putSymbol(code, 16);
            putBits(times - 3, 2);
            return times;
        }
        putSymbol(code, all[at]);
        return 1;
    }

    void writeSymbols(const Code& literals, const Code& distances, std::size_t until) {
        while (made_.size() < until) {
            if (oneIn(2) && writeMatch(literals, distances)) {
                continue;
            }
            writeLiteral(literals);
            breakSometimes([&] { putBits(random_(), static_cast<unsigned>(below(3))); });
        }
        bool ended = true;
        breakSometimes([&] { ended = oneIn(2); });
        if (ended && literals.has(endOfBlock)) {
            putSymbol(literals, endOfBlock);
        }
    }

    void writeLiteral(const Code& literals) {
        std::uint8_t byte = wantedByte();
        for (int tries = 0; !literals.has(byte) && tries < 20; ++tries) {
            byte = isRowStart() ? std::uint8_t(below(5)) : std::uint8_t(random_());
        }
        make(literals.has(byte) ? byte : std::uint8_t{0});
        if (literals.has(made_.back())) {
            putSymbol(literals, made_.back());
        }
    }

    /// One of the symbols that the code has, if a few tries find one.
    std::size_t anySymbol(const Code& code, std::size_t first, std::size_t count) {
        std::size_t symbol = first + below(count);
        for (int tries = 0; tries < 10 && !code.has(symbol); ++tries) {
            symbol = first + below(count);
        }
        return symbol;
    }

    bool writeMatch(const Code& literals, const Code& distances) {
        const std::size_t symbol = anySymbol(literals, endOfBlock + 1, oneIn(2) ? 8 : 31);
        const std::size_t farSymbol = anySymbol(distances, 0, distances.lengths.size());
        if (!literals.has(symbol) || !distances.has(farSymbol)) {
            return false;
        }
        const Range lengths = lengthRange(static_cast<unsigned>(symbol));
        const Range far = distanceRange(static_cast<unsigned>(farSymbol));
        const std::size_t more = below(std::size_t{1} << lengths.bits);
        const std::size_t farther = below(std::size_t{1} << far.bits);
        const bool fits =
            far.first + farther <= made_.size() && lengths.first + more <= untilRowStart();
        const bool valid = symbol < 286 && farSymbol < 30;
        if (!(fits && (valid || broken_)) && !(broken_ && oneIn(12))) {
            return false;
        }
        putSymbol(literals, symbol);
        putBits(more, lengths.bits);
        putDistance(distances, farSymbol);
        putBits(farther, far.bits);
        for (std::size_t i = 0; i < lengths.first + more; ++i) {
            const std::size_t distance = far.first + farther;
            make(distance <= made_.size() ? made_[made_.size() - distance] : std::uint8_t{0});
        }
        return true;
    }

    /// Where there is but one code, 0, a reader may take a 1 for it as well. None should.
    void putDistance(const Code& code, std::size_t symbol) {
        const auto used = std::count_if(code.lengths.begin(), code.lengths.end(),
                                        [](std::uint8_t length) { return length > 0; });
        bool opposite = false;
        if (used == 1) {
            breakSometimes([&] { opposite = true; });
        }
        if (opposite) {
            putBits(1, 1);
        } else {
            putSymbol(code, symbol);
        }
    }

    bool isRowStart() const { return made_.size() % rowBytes_ == 0; }
    std::size_t untilRowStart() const {
        return isRowStart() ? 0 : rowBytes_ - made_.size() % rowBytes_;
    }

    std::uint8_t wantedByte() {
        if (isRowStart()) {
            return static_cast<std::uint8_t>(broken_ && oneIn(20) ? 5 : below(5));
        }
        return static_cast<std::uint8_t>(oneIn(2) ? below(6) : random_());
    }

    void make(std::uint8_t byte) { made_.push_back(byte); }

    void finish() {
        align();
        uLong sum = ::adler32(1, made_.data(), static_cast<uInt>(made_.size()));
        breakSometimes([&] { sum ^= 1U << below(32); });
        for (const int shift : {24, 16, 8, 0}) {
            stream_.push_back(static_cast<std::uint8_t>(sum >> shift));
        }
        breakSometimes([&] { stream_.resize(stream_.size() - below(8)); });
        breakSometimes([&] { stream_.resize(stream_.size() + below(8)); });
    }

    std::mt19937& random_;
    std::size_t rowBytes_;
    std::size_t length_;
    bool broken_;
    Bytes stream_;
    Bytes made_;
    std::size_t held_ = 0;
    unsigned heldCount_ = 0;
};

} // namespace

Bytes randomStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    return StreamWriting(random, rowBytes, rows).write();
}

Bytes oneMatchStream(std::mt19937& random, std::size_t length, std::size_t symbol,
                     std::size_t farSymbol) {
    return StreamWriting(random, length, 1).writeOneMatch(symbol, farSymbol);
}

Bytes matchStream(std::mt19937& random, std::span<const Match> matches) {
    return StreamWriting(random, 1, 0).writeMatches(matches);
}

Bytes zlibStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows) {
    Bytes raw(rowBytes * rows);
    const unsigned different = 1U << random() % 9;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        raw[i] = static_cast<std::uint8_t>(i % rowBytes == 0 ? random() % 5 : random() % different);
    }
    const std::size_t wrong = random() % 16;
    if (wrong == 0) {
        raw.resize(raw.size() + random() % 40);
    } else if (wrong == 1) {
        raw.resize(raw.size() - std::min<std::size_t>(raw.size(), random() % 40));
    }
    z_stream zlib{};
    const int strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    ::deflateInit2(&zlib, static_cast<int>(random() % 10), Z_DEFLATED,
                   random() % 2 == 0 ? MAX_WBITS : 9 + static_cast<int>(random() % 7),
                   1 + static_cast<int>(random() % 9), strategies[random() % 5]);
    Bytes stream(::deflateBound(&zlib, raw.size()));
    zlib.next_in = raw.data();
    zlib.avail_in = static_cast<uInt>(raw.size());
    zlib.next_out = stream.data();
    zlib.avail_out = static_cast<uInt>(stream.size());
    ::deflate(&zlib, Z_FINISH);
    stream.resize(zlib.total_out);
    ::deflateEnd(&zlib);
    return stream;
}

Bytes pngAround(const PngForm& form, std::uint32_t width, std::uint32_t height,
                const Bytes& stream) {
    const PngSample any = randomPng({form.colour, form.depth, false, false}, 1, 1);
    Bytes file;
    for (const ChunkPlace& place : chunksOf(any.file)) {
        if (place.type == "IDAT") {
            file.assign(any.file.begin(),
                        any.file.begin() + static_cast<std::ptrdiff_t>(place.offset));
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        file[16 + i] = static_cast<std::uint8_t>(width >> (24 - 8 * i));
        file[20 + i] = static_cast<std::uint8_t>(height >> (24 - 8 * i));
    }
    const Bytes data = chunk("IDAT", stream);
    const Bytes end = chunk("IEND", Bytes());
    file.insert(file.end(), data.begin(), data.end());
    file.insert(file.end(), end.begin(), end.end());
    return withRightChecksums(file);
}

} // namespace vistrane::testing
