#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// The data of consecutive IDAT chunks, as one stream of bytes.
class ImageData {
public:
    /// `chunks`: contiguous whole chunks with length, type and checksum, checked by
    /// `readPngHeader`. `chunksVisited` is incremented for each chunk that this object or a copy
    /// enters. Both outlive this object.
    ImageData(std::span<const std::uint8_t> chunks, std::size_t& chunksVisited)
        : chunks_(chunks), chunksVisited_(&chunksVisited) {}

    /// Copies up to `room` bytes. Returns how many; fewer only at the end.
    std::size_t read(std::uint8_t* to, std::size_t room);

    /// Skips bytes, up to the end.
    void skip(std::size_t length);

    /// The number of bytes read or skipped so far.
    std::size_t position() const { return position_; }

    /// The unread rest of the current chunk; empty at the end.
    std::span<const std::uint8_t> restOfChunk();

    /// How many bytes of the file follow the current chunk, at least.
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
