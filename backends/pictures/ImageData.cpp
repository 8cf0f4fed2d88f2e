#include "backends/pictures/ImageData.h"

#include <algorithm>
#include <cstring>

namespace vistrane {

namespace {

constexpr std::size_t chunkHeader = 8;
constexpr std::size_t chunkChecksum = 4;

} // namespace

/// Goes to the next chunk that has data if the current one is exhausted.
bool ImageData::findData() {
    while (data_.empty() && !chunks_.empty()) {
        const std::size_t length = static_cast<std::size_t>(chunks_[0]) << 24 |
                                   static_cast<std::size_t>(chunks_[1]) << 16 |
                                   static_cast<std::size_t>(chunks_[2]) << 8 | chunks_[3];
        data_ = chunks_.subspan(chunkHeader, length);
        chunks_ = chunks_.subspan(chunkHeader + length + chunkChecksum);
        ++*chunksVisited_;
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

void ImageData::skip(std::size_t length) {
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

} // namespace vistrane
