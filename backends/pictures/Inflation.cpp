#include "backends/pictures/Inflation.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace vistrane {

namespace {

constexpr std::size_t chunkHead = 8;
constexpr std::size_t chunkEnd = 4;

constexpr std::size_t farthestBack = 32768;
/// How much is made before it is taken: the caches hold it, and moving the last 32 KiB to the
/// front costs little beside it.
constexpr std::size_t stretch = std::size_t{128} * 1024;
/// What each of two chunks of literals may become: a slab of `encodeByIgzip`.
constexpr std::size_t literalRoom = std::size_t{132} * 1024;
/// How much of a file has to follow what is read without looking for its end at every step.
constexpr std::size_t readMargin = 24;
/// More than one turn of the decoding loop writes: eight literals, the longest match and the rest
/// of the 16 bytes that are copied at once.
constexpr std::size_t turnOutput = 320;
/// More than one turn of the decoding loop takes into the bits.
constexpr std::ptrdiff_t turnInput = 32;

// An entry of a table of codes. From the lowest bit:
//   0..4    bits to use up, those of the code and the extra bits of its value
//   8..11   how many of them are the code's; of a literal entry, how many literals it has: 1 or 2
//   12..15  what it is
//   16..31  the literals, or the value to which the extra bits are added
// Of an entry that points to a subtable, 8..11 are the subtable's bits and 16..31 is its place.
constexpr std::uint32_t isLiteral = 1U << 12;
constexpr std::uint32_t isRare = 1U << 13;
constexpr std::uint32_t isSubtable = 1U << 14;
constexpr std::uint32_t isBlockEnd = 1U << 15;
/// Where the bits are no code at all.
constexpr std::uint32_t noCode = isRare;

constexpr unsigned longestCode = 15;
constexpr std::size_t endOfBlock = 256;

constexpr std::uint32_t valueEntry(std::uint32_t value, std::uint32_t extraBits) {
    return value << 16 | extraBits;
}

/// What the symbols stand for; the length of the code is added for each block.
constexpr std::array<std::uint32_t, 288> makeLiteralValues() {
    std::array<std::uint32_t, 288> values{};
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

constexpr std::array<std::uint32_t, 32> makeDistanceValues() {
    std::array<std::uint32_t, 32> values{};
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

std::uint64_t loadWord(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    return word;
}

std::uint32_t lowBits(std::uint64_t bits, unsigned count) {
    return static_cast<std::uint32_t>(bits & ((std::uint64_t{1} << count) - 1));
}

/// The next code of the same length. Codes are counted up from their first bit, which is the
/// lowest one here.
std::uint32_t nextCode(std::uint32_t code, std::uint32_t allOnes) {
    const std::uint32_t highestZero = std::bit_floor(code ^ allOnes);
    return (code & (highestZero - 1)) | highestZero;
}

/// Sorts symbols by code length, then by value, as codes are dealt out.
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

    /// Whether each sequence of bits is, or begins with, exactly one code.
    bool isComplete() const {
        std::uint32_t used = 0;
        for (unsigned length = 1; length <= longestCode; ++length) {
            used += static_cast<std::uint32_t>(count[length]) << (longestCode - length);
        }
        return used == 1U << longestCode;
    }

    std::size_t symbolCount() const {
        std::size_t sum = 0;
        for (const std::uint16_t some : count) {
            sum += some;
        }
        return sum;
    }
};

std::uint32_t entryOf(std::uint32_t value, unsigned codeBits) {
    if ((value & isLiteral) != 0) {
        return value | 1U << 8 | codeBits;
    }
    // The extra bits are already there.
    return (value | codeBits << 8) + codeBits;
}

/// Fills in a table for a complete code. A table that is read by so many bits has all codes up to
/// that length; each longer one leads to a subtable by its first bits.
class TableBuilding {
public:
    TableBuilding(const CodeOrder& order, const std::uint32_t* values, std::uint32_t* table,
                  unsigned tableBits)
        : order_(order), values_(values), table_(table), tableBits_(tableBits) {}

    void build() {
        length_ = 1;
        while (order_.count[length_] == 0) {
            ++length_;
        }
        left_ = order_.count[length_];
        end_ = 1U << std::min(length_, tableBits_);
        if (length_ > tableBits_ || !fillShortCodes()) {
            fillSubtables();
        }
    }

private:
    /// The table is filled for the shortest codes first, then doubled each time that codes become
    /// one bit longer. True when all codes are done.
    bool fillShortCodes() {
        for (;;) {
            table_[code_] = entryOf(values_[order_.symbols[next_++]], length_);
            if (code_ == end_ - 1) {
                while (end_ < 1U << tableBits_) {
                    doubleTable();
                }
                return true;
            }
            code_ = nextCode(code_, end_ - 1);
            if (--left_ == 0) {
                do {
                    if (++length_ <= tableBits_) {
                        doubleTable();
                    }
                } while ((left_ = order_.count[length_]) == 0);
            }
            if (length_ > tableBits_) {
                return false;
            }
        }
    }

    void doubleTable() {
        std::memcpy(table_ + end_, table_, end_ * sizeof table_[0]);
        end_ *= 2;
    }

    void fillSubtables() {
        const std::uint32_t mask = (1U << tableBits_) - 1;
        std::uint32_t prefix = ~0U;
        std::uint32_t start = 0;
        end_ = 1U << tableBits_;
        for (;;) {
            if ((code_ & mask) != prefix) {
                prefix = code_ & mask;
                start = end_;
                const unsigned bits = subtableBits();
                end_ = start + (1U << bits);
                table_[prefix] = start << 16 | isRare | isSubtable | bits << 8 | tableBits_;
            }
            const std::uint32_t entry =
                entryOf(values_[order_.symbols[next_++]], length_ - tableBits_);
            const std::uint32_t step = 1U << (length_ - tableBits_);
            for (std::uint32_t i = start + (code_ >> tableBits_); i < end_; i += step) {
                table_[i] = entry;
            }
            if (code_ == (1U << length_) - 1) {
                return;
            }
            code_ = nextCode(code_, (1U << length_) - 1);
            --left_;
            while (left_ == 0) {
                left_ = order_.count[++length_];
            }
        }
    }

    /// The codes that begin with the same bits are complete among themselves, so they fill their
    /// subtable: it has as many bits as that takes.
    unsigned subtableBits() const {
        unsigned bits = length_ - tableBits_;
        std::uint32_t used = left_;
        while (used < 1U << bits) {
            ++bits;
            used = used * 2 + order_.count[tableBits_ + bits];
        }
        return bits;
    }

    const CodeOrder& order_;
    const std::uint32_t* values_;
    std::uint32_t* table_;
    unsigned tableBits_;
    unsigned length_ = 0;
    std::uint32_t left_ = 0;
    std::uint32_t code_ = 0;
    std::uint32_t end_ = 0;
    std::size_t next_ = 0;
};

/// Lets one look into the table yield two literals where the bits hold both of their codes.
void pairLiterals(std::uint32_t* table, unsigned tableBits) {
    // From the end, because an entry is paired with one before it, which must still be single.
    for (std::uint32_t i = 1U << tableBits; i-- > 0;) {
        const std::uint32_t first = table[i];
        const std::uint32_t second = table[i >> (first & 31U)];
        const std::uint32_t bits = (first & 31U) + (second & 31U);
        if ((first & second & isLiteral) != 0 && bits <= tableBits) {
            table[i] = (first & 0xFF0000U) | (second & 0xFF0000U) << 8 | isLiteral | 2U << 8 | bits;
        }
    }
}

/// Copies a match whose bytes repeat after fewer than 8: each word of 8 is made from the last,
/// without reading what has just been written.
inline void repeatShortly(std::uint8_t* to, std::size_t distance, std::size_t length) {
    std::uint8_t first[8];
    const std::uint8_t* from = to - distance;
    for (std::size_t i = 0, k = 0; i < 8; ++i) {
        first[i] = from[k];
        k = k + 1 == distance ? 0 : k + 1;
    }
    std::uint64_t word = loadWord(first);
    const std::size_t shift = 8 * (8 % distance);
    for (std::uint8_t* end = to + length; to < end; to += 8) {
        std::uint64_t stored = word;
        if constexpr (std::endian::native == std::endian::big) {
            stored = __builtin_bswap64(stored);
        }
        std::memcpy(to, &stored, 8);
        // The remainder of 8 is below 4 for every distance, so twice that many bytes are there.
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

/// Writes up to 15 bytes more than `length`.
inline void copyMatch(std::uint8_t* to, std::size_t distance, std::size_t length) {
    if (distance >= 16) {
        copyBy<16>(to, distance, length);
    } else if (distance >= 8) {
        copyBy<8>(to, distance, length);
    } else if (distance == 1) {
        std::memset(to, to[-1], length);
    } else {
        repeatShortly(to, distance, length);
    }
}

} // namespace

/// On to the next chunk with data where the one at hand has none left.
bool ImageData::findData() {
    while (data_.empty() && !chunks_.empty()) {
        const std::size_t length = static_cast<std::size_t>(chunks_[0]) << 24 |
                                   static_cast<std::size_t>(chunks_[1]) << 16 |
                                   static_cast<std::size_t>(chunks_[2]) << 8 | chunks_[3];
        data_ = chunks_.subspan(chunkHead, length);
        chunks_ = chunks_.subspan(chunkHead + length + chunkEnd);
    }
    return !data_.empty();
}

std::size_t ImageData::read(std::uint8_t* to, std::size_t room) {
    std::size_t read = 0;
    while (read < room && findData()) {
        const std::size_t length = std::min(room - read, data_.size());
        std::memcpy(to + read, data_.data(), length);
        data_ = data_.subspan(length);
        read += length;
    }
    position_ += read;
    return read;
}

void ImageData::passOver(std::size_t length) {
    while (length > 0 && findData()) {
        const std::size_t part = std::min(length, data_.size());
        data_ = data_.subspan(part);
        position_ += part;
        length -= part;
    }
}

std::span<const std::uint8_t> ImageData::restOfChunk() {
    findData();
    return data_;
}

Inflation::Inflation(ImageData data, std::size_t length, std::size_t untaken)
    : data_(data), length_(length), ahead_(data) {
    const std::size_t atOnce = std::min(length, farthestBack + untaken + stretch);
    const std::size_t room = std::min(length, atOnce + 2 * literalRoom) + 2 * turnOutput;
    if (auto window = ByteArray::ofLength(room)) {
        window_ = std::move(*window);
        out_ = window_.data();
        taken_ = out_;
        outLimit_ = out_ + atOnce + turnOutput;
    }
    inEnd_ = input_.data();
    reader_.startAt(inEnd_);
}

/// Decompresses the codes of a block. What changes at every turn is held apart from the object, so
/// that the compiler keeps it in registers.
struct InflationLoop {
    const std::uint8_t* in;
    std::uint64_t bits;
    unsigned bitCount;
    std::uint8_t* out;

    [[gnu::always_inline]] inline void refill() {
        bits |= loadWord(in) << bitCount;
        in += (63 - bitCount) / 8;
        bitCount |= 56;
    }

    [[gnu::always_inline]] inline void use(std::uint32_t count) {
        bits >>= count;
        bitCount -= count;
    }

    [[gnu::always_inline]] inline void put(std::uint32_t entry) {
        out[0] = static_cast<std::uint8_t>(entry >> 16);
        out[1] = static_cast<std::uint8_t>(entry >> 24);
        out += entry >> 8 & 3U;
        use(entry & 31U);
    }

    /// The value of an entry with its extra bits.
    [[gnu::always_inline]] inline std::uint32_t value(std::uint32_t entry) {
        const std::uint32_t extra = lowBits(bits, entry & 31U) >> (entry >> 8 & 15U);
        use(entry & 31U);
        return (entry >> 16) + extra;
    }

    [[gnu::always_inline]] inline std::uint32_t inSubtable(const std::uint32_t* table,
                                                           std::uint32_t entry) {
        use(entry & 31U);
        return table[(entry >> 16) + lowBits(bits, entry >> 8 & 15U)];
    }

    /// False when there is no such code or distance.
    [[gnu::always_inline]] static inline bool run(Inflation& inflation) {
        InflationLoop loop{inflation.reader_.in, inflation.reader_.bits, inflation.reader_.bitCount,
                           inflation.out_};
        const bool fine = loop.decode(inflation);
        inflation.reader_.in = loop.in;
        inflation.reader_.bits = loop.bits;
        inflation.reader_.bitCount = loop.bitCount;
        inflation.out_ = loop.out;
        return fine;
    }

    [[gnu::always_inline]] inline bool decode(Inflation& inflation) {
        const std::uint32_t* const literals = inflation.reader_.literalTable.data();
        const std::uint32_t* const distances = inflation.reader_.distanceTable.data();
        const std::uint8_t* const window = inflation.window_.data();
        const std::uint8_t* const outLimit = inflation.outLimit_;
        const std::uint8_t* const inLimit =
            inflation.inEnd_ + (inflation.drained_ ? turnInput : -turnInput);
        refill();
        std::uint32_t entry = literals[lowBits(bits, DeflateReader::literalBits)];
        while (in < inLimit && out < outLimit) {
            // Four looks into the table use up 44 of the 56 bits that there are at least.
            if ((entry & isLiteral) != 0) {
                put(entry);
                entry = literals[lowBits(bits, DeflateReader::literalBits)];
                if ((entry & isLiteral) != 0) {
                    put(entry);
                    entry = literals[lowBits(bits, DeflateReader::literalBits)];
                    if ((entry & isLiteral) != 0) {
                        put(entry);
                        entry = literals[lowBits(bits, DeflateReader::literalBits)];
                        if ((entry & isLiteral) != 0) {
                            put(entry);
                            refill();
                            entry = literals[lowBits(bits, DeflateReader::literalBits)];
                            continue;
                        }
                    }
                }
                refill();
            }
            // A length and a distance have 48 bits at most.
            if ((entry & isRare) != 0) {
                if ((entry & isSubtable) != 0) {
                    entry = inSubtable(literals, entry);
                }
                if ((entry & isLiteral) != 0) {
                    put(entry);
                    refill();
                    entry = literals[lowBits(bits, DeflateReader::literalBits)];
                    continue;
                }
                if ((entry & isRare) != 0) {
                    use(entry & 31U);
                    inflation.step_ =
                        inflation.lastBlock_ ? Inflation::Step::Checksum : Inflation::Step::Head;
                    return (entry & isBlockEnd) != 0;
                }
            }
            const std::uint32_t length = value(entry);
            entry = distances[lowBits(bits, DeflateReader::distanceBits)];
            if ((entry & isSubtable) != 0) {
                entry = inSubtable(distances, entry);
            }
            if ((entry & isRare) != 0) {
                return false;
            }
            const std::uint32_t distance = value(entry);
            if (distance > static_cast<std::size_t>(out - window)) {
                return false;
            }
            refill();
            entry = literals[lowBits(bits, DeflateReader::literalBits)];
            copyMatch(out, distance, length);
            out += length;
        }
        return true;
    }
};

/// Decompresses two blocks of literals, one code of each in turn.
class LiteralLoops {
public:
    struct Lane {
        DeflateReader& reader;
        const std::uint8_t* inEnd;
        std::uint8_t* out;
        const std::uint8_t* outEnd;
    };

    /// False when one of the two does not end in time, or has no such code.
    [[gnu::always_inline]] static inline bool run(Lane& first, Lane& second) {
        InflationLoop a = loopOf(first);
        InflationLoop b = loopOf(second);
        decodeTogether(a, first, b, second);
        return decodeRest(a, first) && decodeRest(b, second);
    }

private:
    static InflationLoop loopOf(const Lane& lane) {
        return {lane.reader.in, lane.reader.bits, lane.reader.bitCount, lane.out};
    }

    /// Of a turn: it takes at most 7 bytes in, and makes at most 8.
    static std::ptrdiff_t turns(const InflationLoop& loop, const Lane& lane) {
        return std::min(lane.inEnd - loop.in, lane.outEnd - loop.out) / 8;
    }

    [[gnu::always_inline]] static inline void decodeTogether(InflationLoop& a, const Lane& first,
                                                             InflationLoop& b, const Lane& second) {
        const std::uint32_t* const codes = first.reader.literalTable.data();
        const std::uint32_t* const otherCodes = second.reader.literalTable.data();
        for (;;) {
            std::ptrdiff_t left = std::min(turns(a, first), turns(b, second));
            if (left <= 0) {
                return;
            }
            for (; left > 0; --left) {
                a.refill();
                b.refill();
                // Four codes use up 44 of the 56 bits that there are at least.
                for (int i = 0; i < 4; ++i) {
                    const std::uint32_t entry = codes[lowBits(a.bits, DeflateReader::literalBits)];
                    const std::uint32_t other =
                        otherCodes[lowBits(b.bits, DeflateReader::literalBits)];
                    if ((entry & other & isLiteral) == 0) {
                        return;
                    }
                    a.put(entry);
                    b.put(other);
                }
            }
        }
    }

    /// To the end of the block.
    [[gnu::always_inline]] static inline bool decodeRest(InflationLoop& loop, Lane& lane) {
        const std::uint32_t* const codes = lane.reader.literalTable.data();
        while (loop.in <= lane.inEnd + 8 && lane.outEnd - loop.out >= 2) {
            loop.refill();
            std::uint32_t entry = codes[lowBits(loop.bits, DeflateReader::literalBits)];
            if ((entry & isSubtable) != 0) {
                entry = loop.inSubtable(codes, entry);
            }
            if ((entry & isLiteral) == 0) {
                loop.use(entry & 31U);
                lane.reader.in = loop.in;
                lane.reader.bits = loop.bits;
                lane.reader.bitCount = loop.bitCount;
                lane.out = loop.out;
                return (entry & isBlockEnd) != 0;
            }
            loop.put(entry);
        }
        return false;
    }
};

namespace {

bool decodeWithAnyProcessor(Inflation& inflation) {
    return InflationLoop::run(inflation);
}

bool decodeTwoWithAnyProcessor(LiteralLoops::Lane& first, LiteralLoops::Lane& second) {
    return LiteralLoops::run(first, second);
}

#if defined(__x86_64__)
// Its shifts take their count from any register and leave the flags alone.
__attribute__((target("bmi,bmi2"))) bool decodeWithBmi2(Inflation& inflation) {
    return InflationLoop::run(inflation);
}

__attribute__((target("bmi,bmi2"))) bool decodeTwoWithBmi2(LiteralLoops::Lane& first,
                                                           LiteralLoops::Lane& second) {
    return LiteralLoops::run(first, second);
}
#endif

struct Decoding {
    bool (*block)(Inflation&) = decodeWithAnyProcessor;
    bool (*twoBlocks)(LiteralLoops::Lane&, LiteralLoops::Lane&) = decodeTwoWithAnyProcessor;
};

Decoding chooseDecoding() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2")) {
        return {decodeWithBmi2, decodeTwoWithBmi2};
    }
#endif
    return {};
}

const Decoding& decoding() {
    static const Decoding chosen = chooseDecoding();
    return chosen;
}

/// What a chunk ends with whose last block is an empty stored one.
constexpr std::array<std::uint8_t, 4> emptyBlock = {0, 0, 0xFF, 0xFF};

/// Whether these are a block with codes of its own for nothing but literals, not the last one of
/// its stream, and an empty stored block, by what can be told from the ends.
bool seemLiterals(std::span<const std::uint8_t> bytes, std::size_t longestHead) {
    constexpr std::uint8_t literalsOnly = 4;
    return bytes.size() >= longestHead && bytes.front() == literalsOnly &&
           std::equal(emptyBlock.begin(), emptyBlock.end(), bytes.end() - emptyBlock.size());
}

bool endsWithEmptyBlock(DeflateReader& reader, const std::uint8_t* end) {
    constexpr std::uint32_t stored = 0;
    if (reader.takeBits(3) != stored) {
        return false;
    }
    reader.returnWholeBytes();
    return end - reader.in == emptyBlock.size();
}

} // namespace

bool Inflation::decodeCodes() {
    return decoding().block(*this);
}

/// True when the next two chunks were nothing but literals, and are done. Else nothing has changed,
/// and the blocks are to be read as usual.
bool Inflation::decodeTwoChunks() {
    if (reader_.bitCount % 8 != 0) {
        return false;
    }
    const std::size_t unread = static_cast<std::size_t>(inEnd_ - reader_.in) + reader_.bitCount / 8;
    const std::size_t position = data_.position() - unread;
    if (position < nextTry_) {
        return false;
    }
    ahead_.passOver(position - ahead_.position());
    const std::span<const std::uint8_t> first = ahead_.restOfChunk();
    if (!seemLiterals(first, longestHead)) {
        return false;
    }
    nextTry_ = position + first.size();
    ImageData next = ahead_;
    next.passOver(first.size());
    const std::span<const std::uint8_t> second = next.restOfChunk();
    if (!seemLiterals(second, longestHead) || next.behindChunk() < readMargin) {
        return false;
    }
    if (!decodeLiterals(first, second)) {
        return false;
    }
    next.passOver(second.size());
    data_ = ahead_ = next;
    inEnd_ = input_.data();
    reader_.startAt(inEnd_);
    drained_ = false;
    return true;
}

bool Inflation::decodeLiterals(std::span<const std::uint8_t> first,
                               std::span<const std::uint8_t> second) {
    const std::uint8_t* const end = window_.data() + window_.length() - turnOutput;
    const auto room = static_cast<std::size_t>(std::max<std::ptrdiff_t>(end - out_, 0));
    const std::size_t each = std::min(literalRoom, room / 2);
    std::uint8_t* const middle = out_ + each;
    DeflateReader& one = twoReaders_[0];
    DeflateReader& other = twoReaders_[1];
    LiteralLoops::Lane lane{one, first.data() + first.size(), out_, middle};
    LiteralLoops::Lane otherLane{other, second.data() + second.size(), middle, middle + each};
    one.startAt(first.data());
    other.startAt(second.data());
    one.takeBits(3);
    other.takeBits(3);
    if (!one.readCodes() || !other.readCodes() || !decoding().twoBlocks(lane, otherLane) ||
        !endsWithEmptyBlock(one, lane.inEnd) || !endsWithEmptyBlock(other, otherLane.inEnd)) {
        return false;
    }
    const auto length = static_cast<std::size_t>(otherLane.out - middle);
    std::memmove(lane.out, middle, length);
    out_ = lane.out + length;
    return true;
}

Inflation::Outcome Inflation::more() {
    if (out_ == nullptr || (!started_ && !readStreamHead())) {
        return Outcome::GivenUp;
    }
    slide();
    const std::uint8_t* const before = out_;
    while (step_ != Step::Checksum && out_ < outLimit_) {
        if (!goOn() || isOverrun()) {
            return Outcome::GivenUp;
        }
    }
    checksum_ = ::libdeflate_adler32(checksum_, before, static_cast<std::size_t>(out_ - before));
    const std::size_t made = slidOut_ + static_cast<std::size_t>(out_ - window_.data());
    if (made > length_) {
        return Outcome::GivenUp;
    }
    if (step_ == Step::Checksum) {
        return made == length_ && readChecksum() ? Outcome::Ended : Outcome::GivenUp;
    }
    return Outcome::Going;
}

/// Makes room: what can still be referred to, or has not been taken, moves to the front.
void Inflation::slide() {
    if (out_ < outLimit_) {
        return;
    }
    const std::uint8_t* from = std::min<const std::uint8_t*>(out_ - farthestBack, taken_);
    const auto kept = static_cast<std::size_t>(out_ - from);
    const auto gone = static_cast<std::size_t>(from - window_.data());
    std::memmove(window_.data(), from, kept);
    slidOut_ += gone;
    out_ -= gone;
    taken_ -= gone;
}

bool Inflation::goOn() {
    if (step_ == Step::Head && decodeTwoChunks()) {
        return true;
    }
    if (!drained_ && inEnd_ - reader_.in < static_cast<std::ptrdiff_t>(longestHead)) {
        fillInput();
    }
    switch (step_) {
    case Step::Head:
        return readBlockHead();
    case Step::Stored:
        return copyStored();
    default:
        return decodeCodes();
    }
}

void Inflation::fillInput() {
    // Up to 8 bytes that are in the bits may have to be given back.
    const std::ptrdiff_t gone = std::max<std::ptrdiff_t>(reader_.in - input_.data() - 8, 0);
    const auto kept = static_cast<std::size_t>(inEnd_ - input_.data() - gone);
    std::memmove(input_.data(), input_.data() + gone, kept);
    const std::size_t read = data_.read(input_.data() + kept, inputRoom - kept);
    reader_.in -= gone;
    inEnd_ = input_.data() + kept + read;
    if (read < inputRoom - kept) {
        drained_ = true;
        std::memset(input_.data() + kept + read, 0, input_.size() - kept - read);
    }
}

/// Whether bits were used that the file does not have.
bool Inflation::isOverrun() const {
    return drained_ && reader_.in - reader_.bitCount / 8 > inEnd_;
}

void DeflateReader::refill() {
    bits |= loadWord(in) << bitCount;
    in += (63 - bitCount) / 8;
    bitCount |= 56;
}

std::uint32_t DeflateReader::takeBits(unsigned count) {
    refill();
    const std::uint32_t value = lowBits(bits, count);
    bits >>= count;
    bitCount -= count;
    return value;
}

void DeflateReader::returnWholeBytes() {
    startAt(in - bitCount / 8);
}

bool Inflation::readStreamHead() {
    started_ = true;
    fillInput();
    if (inEnd_ - reader_.in < 2) {
        return false;
    }
    const unsigned method = reader_.in[0];
    const unsigned flags = reader_.in[1];
    reader_.in += 2;
    const unsigned windowBits = (method >> 4) + 8;
    constexpr unsigned dictionary = 0x20;
    // Where all of the bytes fit into the announced window, nothing can refer beyond it.
    const bool reachesAll = windowBits == 15 || (windowBits < 15 && length_ >> windowBits == 0);
    return (method & 15U) == 8 && (method << 8 | flags) % 31 == 0 && (flags & dictionary) == 0 &&
           reachesAll;
}

bool Inflation::readBlockHead() {
    lastBlock_ = reader_.takeBits(1) == 1;
    step_ = Step::Codes;
    switch (reader_.takeBits(2)) {
    case 0:
        return readStoredHead();
    case 1:
        return reader_.useFixedCodes();
    case 2:
        return reader_.readCodes();
    default:
        return false;
    }
}

bool Inflation::readStoredHead() {
    step_ = Step::Stored;
    reader_.returnWholeBytes();
    const unsigned length =
        static_cast<unsigned>(reader_.in[0]) | static_cast<unsigned>(reader_.in[1]) << 8;
    const unsigned opposite =
        static_cast<unsigned>(reader_.in[2]) | static_cast<unsigned>(reader_.in[3]) << 8;
    reader_.in += 4;
    storedLeft_ = length;
    return (length ^ opposite) == 0xFFFF;
}

bool Inflation::copyStored() {
    if (reader_.in > inEnd_) {
        return false;
    }
    const std::size_t length = std::min({storedLeft_, static_cast<std::size_t>(inEnd_ - reader_.in),
                                         static_cast<std::size_t>(outLimit_ - out_)});
    if (length > 0) {
        std::memcpy(out_, reader_.in, length);
    }
    reader_.in += length;
    out_ += length;
    storedLeft_ -= length;
    if (storedLeft_ == 0) {
        step_ = lastBlock_ ? Step::Checksum : Step::Head;
    }
    return length > 0 || storedLeft_ == 0 || !drained_;
}

bool DeflateReader::useFixedCodes() {
    const auto from = codeLengths.begin();
    std::fill(from, from + 144, std::uint8_t{8});
    std::fill(from + 144, from + 256, std::uint8_t{9});
    std::fill(from + 256, from + 280, std::uint8_t{7});
    std::fill(from + 280, from + 288, std::uint8_t{8});
    std::fill(from + 288, from + 320, std::uint8_t{5});
    return buildCodes(288, 32);
}

bool DeflateReader::readCodes() {
    const std::size_t literals = takeBits(5) + 257;
    const std::size_t distances = takeBits(5) + 1;
    const std::size_t lengthCodes = takeBits(4) + 4;
    if (literals > 286 || distances > 30) {
        return false;
    }
    constexpr std::array<std::uint8_t, 19> places = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::array<std::uint8_t, 19> lengths{};
    for (std::size_t i = 0; i < lengthCodes; ++i) {
        lengths[places[i]] = static_cast<std::uint8_t>(takeBits(3));
    }
    const CodeOrder order(lengths);
    if (!order.isComplete()) {
        return false;
    }
    constexpr unsigned tableBits = 7;
    std::array<std::uint32_t, 19> values{};
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        values[i] = valueEntry(i, 0);
    }
    std::array<std::uint32_t, 1U << tableBits> table{};
    TableBuilding(order, values.data(), table.data(), tableBits).build();

    std::size_t known = 0;
    while (known < literals + distances) {
        refill();
        const std::uint32_t entry = table[lowBits(bits, tableBits)];
        bits >>= entry & 31U;
        bitCount -= entry & 31U;
        const std::uint32_t symbol = entry >> 16;
        if (symbol < 16) {
            codeLengths[known++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        if (symbol == 16 && known == 0) {
            return false;
        }
        const std::uint8_t repeated = symbol == 16 ? codeLengths[known - 1] : std::uint8_t{0};
        const std::size_t times = symbol == 16   ? 3 + takeBits(2)
                                  : symbol == 17 ? 3 + takeBits(3)
                                                 : 11 + takeBits(7);
        if (times > literals + distances - known) {
            return false;
        }
        std::fill_n(codeLengths.begin() + static_cast<std::ptrdiff_t>(known), times, repeated);
        known += times;
    }
    return codeLengths[endOfBlock] != 0 && buildCodes(literals, distances);
}

bool DeflateReader::buildCodes(std::size_t literals, std::size_t distances) {
    const std::span<const std::uint8_t> lengths(codeLengths);
    const CodeOrder literalOrder(lengths.first(literals));
    const CodeOrder distanceOrder(lengths.subspan(literals, distances));
    if (!literalOrder.isComplete()) {
        return false;
    }
    TableBuilding(literalOrder, literalValues.data(), literalTable.data(), literalBits).build();
    pairLiterals(literalTable.data(), literalBits);

    if (distanceOrder.isComplete()) {
        TableBuilding(distanceOrder, distanceValues.data(), distanceTable.data(), distanceBits)
            .build();
        return true;
    }
    // Literals alone need no distance, and the same distance again and again needs one code, which
    // is a single 0.
    const std::size_t symbols = distanceOrder.symbolCount();
    std::fill_n(distanceTable.begin(), 1U << distanceBits, noCode);
    if (symbols == 1 && distanceOrder.count[1] == 1) {
        const std::uint32_t entry = entryOf(distanceValues[distanceOrder.symbols[0]], 1);
        for (std::size_t i = 0; i < 1U << distanceBits; i += 2) {
            distanceTable[i] = entry;
        }
        return true;
    }
    return symbols == 0;
}

/// The stream's own checksum, after which the data must end.
bool Inflation::readChecksum() {
    if (!drained_) {
        fillInput();
    }
    reader_.returnWholeBytes();
    if (inEnd_ - reader_.in != 4 || !drained_) {
        return false;
    }
    const std::uint32_t expected = static_cast<std::uint32_t>(reader_.in[0]) << 24 |
                                   static_cast<std::uint32_t>(reader_.in[1]) << 16 |
                                   static_cast<std::uint32_t>(reader_.in[2]) << 8 | reader_.in[3];
    step_ = Step::Ended;
    return expected == checksum_;
}

} // namespace vistrane
