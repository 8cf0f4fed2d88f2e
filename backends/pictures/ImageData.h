#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// The data of consecutive IDAT chunks as one stream of bytes.
class ImageData {
public:
    /// `chunks`: whole chunks with length, type and checksum, and no gap between them, as
    /// `readPngHeader` has checked them. `chunksVisited` is incremented for each chunk that is
    /// entered, also by copies; both must outlive this object.
    ImageData(std::span<const std::uint8_t> chunks, std::size_t& chunksVisited)
        : chunks_(chunks), chunksVisited_(&chunksVisited) {}

    /// Copies the next bytes, at most `room`. Returns how many: fewer only at the end.
    std::size_t read(std::uint8_t* to, std::size_t room);

    /// Skips the next bytes, at most up to the end.
    void skip(std::size_t length);

    /// How many bytes were read or skipped.
    std::size_t position() const { return position_; }

    /// The next bytes that lie in one chunk; empty at the end.
    std::span<const std::uint8_t> restOfChunk();

    /// How many bytes of the file are known to follow the current chunk.
    std::size_t bytesAfterChunk() const { return chunks_.size(); }

private:
    bool findData();

    std::span<const std::uint8_t> chunks_;
    std::size_t* chunksVisited_;
    std::size_t position_ = 0;
    /// The unread data of the current chunk.
    std::span<const std::uint8_t> data_;
};

} // namespace vistrane
