#include "backends/pictures/Inflation.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vistrane {

namespace {

constexpr std::size_t farthestMatch = 32768;
/// The size of a part. It fits into the caches, and is large compared with the 32 KiB of history
/// that are moved to the front for each part.
constexpr std::size_t part = std::size_t{128} * 1024;
/// Room for the decompressed bytes of a literal chunk: a slab of `encodeByIgzip`.
constexpr std::size_t literalRoom = std::size_t{132} * 1024;
/// How many bytes of the file must follow a pair of chunks: decoding them does not check for the
/// end at every step.
constexpr std::size_t readMargin = 24;

} // namespace

Inflation::Inflation(std::span<const std::uint8_t> chunks, std::size_t length, std::size_t untaken)
    : data_(chunks, chunksVisited_), length_(length), ahead_(data_) {
    constexpr std::size_t margin = DeflateBlock::turnOutput;
    const std::size_t atOnce = std::min(length, farthestMatch + untaken + part);
    const std::size_t room = std::min(length, atOnce + 2 * literalRoom) + 2 * margin;
    if (auto window = ByteArray::ofLength(room)) {
        window_ = std::move(*window);
        out_ = window_.data();
        taken_ = out_;
        outLimit_ = out_ + atOnce + margin;
    }
    inEnd_ = input_.data();
    reader_.startAt(inEnd_);
}

Inflation::Outcome Inflation::more() {
    if (out_ == nullptr || (!started_ && !readStreamHeader())) {
        return Outcome::Refused;
    }
    slide();
    const std::uint8_t* const before = out_;
    while (step_ != Step::Checksum && out_ < outLimit_) {
        if (!step() || isOverrun()) {
            return Outcome::Refused;
        }
    }
    checksum_ = ::libdeflate_adler32(checksum_, before, static_cast<std::size_t>(out_ - before));
    const std::size_t made = slidOut_ + static_cast<std::size_t>(out_ - window_.data());
    if (made > length_) {
        return Outcome::Refused;
    }
    if (step_ == Step::Checksum) {
        return made == length_ && readChecksum() ? Outcome::Ended : Outcome::Refused;
    }
    return Outcome::Going;
}

/// Makes room: moves the bytes that were not taken, or that matches can still reach, to the front.
void Inflation::slide() {
    if (out_ < outLimit_) {
        return;
    }
    const std::uint8_t* from = std::min<const std::uint8_t*>(out_ - farthestMatch, taken_);
    const auto kept = static_cast<std::size_t>(out_ - from);
    const auto gone = static_cast<std::size_t>(from - window_.data());
    std::memmove(window_.data(), from, kept);
    slidOut_ += gone;
    out_ -= gone;
    taken_ -= gone;
}

void Inflation::fillInput() {
    // Keeps 8 bytes, because the reader may have to put back up to 8 bytes of its bits.
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

/// Whether the reader has used bits beyond the end of the data.
bool Inflation::isOverrun() const {
    return drained_ && reader_.in - reader_.bitCount / 8 > inEnd_;
}

bool Inflation::readStreamHeader() {
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
    // A window that holds all bytes is large enough for every match.
    const bool reachesAll = windowBits == 15 || (windowBits < 15 && length_ >> windowBits == 0);
    return (method & 15U) == 8 && (method << 8 | flags) % 31 == 0 && (flags & dictionary) == 0 &&
           reachesAll;
}

/// Reads a block's header, a part of its contents, or two literal chunks.
bool Inflation::step() {
    ++steps_;
    if (step_ == Step::BlockHeader && decodeTwoChunks()) {
        return true;
    }
    if (!drained_ &&
        inEnd_ - reader_.in < static_cast<std::ptrdiff_t>(DeflateCodes::longestHeader)) {
        fillInput();
    }
    switch (step_) {
    case Step::BlockHeader:
        return readBlockHeader();
    case Step::Stored:
        return copyStored();
    default:
        return decodeCodes();
    }
}

bool Inflation::readBlockHeader() {
    lastBlock_ = reader_.take(1) == 1;
    step_ = Step::Codes;
    switch (reader_.take(2)) {
    case 0:
        return readStoredHeader();
    case 1:
        codes_ = &DeflateCodes::fixed();
        return true;
    case 2:
        codes_ = &ownCodes_;
        return ownCodes_.read(reader_);
    default:
        return false;
    }
}

bool Inflation::readStoredHeader() {
    step_ = Step::Stored;
    reader_.alignToByte();
    const unsigned length =
        static_cast<unsigned>(reader_.in[0]) | static_cast<unsigned>(reader_.in[1]) << 8;
    const unsigned complement =
        static_cast<unsigned>(reader_.in[2]) | static_cast<unsigned>(reader_.in[3]) << 8;
    reader_.in += 4;
    storedLeft_ = length;
    return (length ^ complement) == 0xFFFF;
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
        endBlock();
    }
    return length > 0 || storedLeft_ == 0 || !drained_;
}

bool Inflation::decodeCodes() {
    constexpr std::ptrdiff_t margin = DeflateBlock::turnInput;
    DeflateBlock block{reader_, inEnd_ + (drained_ ? margin : -margin), out_, window_.data(),
                       outLimit_};
    const DeflateBlockState state = decodeBlock(block, *codes_);
    reader_ = block.reader;
    out_ = block.out;
    if (state == DeflateBlockState::Ended) {
        endBlock();
    }
    return state != DeflateBlockState::Invalid;
}

void Inflation::endBlock() {
    step_ = lastBlock_ ? Step::Checksum : Step::BlockHeader;
}

/// Decodes the next two chunks if both are literal chunks. Otherwise returns false and changes
/// nothing; the caller then reads block by block.
bool Inflation::decodeTwoChunks() {
    if (reader_.bitCount % 8 != 0) {
        return false;
    }
    const std::size_t unread = static_cast<std::size_t>(inEnd_ - reader_.in) + reader_.bitCount / 8;
    const std::size_t position = data_.position() - unread;
    if (position < nextTry_) {
        return false;
    }
    ahead_.skip(position - ahead_.position());
    const std::span<const std::uint8_t> first = ahead_.restOfChunk();
    if (!mayBeLiteralChunk(first)) {
        return false;
    }
    nextTry_ = position + first.size();
    ImageData next = ahead_;
    next.skip(first.size());
    const std::span<const std::uint8_t> second = next.restOfChunk();
    if (!mayBeLiteralChunk(second) || next.bytesAfterChunk() < readMargin) {
        return false;
    }
    const std::uint8_t* const end = window_.data() + window_.length() - DeflateBlock::turnOutput;
    const auto room = static_cast<std::size_t>(std::max<std::ptrdiff_t>(end - out_, 0));
    std::uint8_t* const out = pair_.decode(first, second, out_, std::min(2 * literalRoom, room));
    if (out == nullptr) {
        return false;
    }
    out_ = out;
    next.skip(second.size());
    data_ = ahead_ = next;
    inEnd_ = input_.data();
    reader_.startAt(inEnd_);
    drained_ = false;
    return true;
}

/// Checks the checksum of the stream, which must be at the end of the data.
bool Inflation::readChecksum() {
    if (!drained_) {
        fillInput();
    }
    reader_.alignToByte();
    if (inEnd_ - reader_.in != 4 || !drained_) {
        return false;
    }
    const std::uint32_t expected = static_cast<std::uint32_t>(reader_.in[0]) << 24 |
                                   static_cast<std::uint32_t>(reader_.in[1]) << 16 |
                                   static_cast<std::uint32_t>(reader_.in[2]) << 8 | reader_.in[3];
    return expected == checksum_;
}

} // namespace vistrane
