#include "backends/pictures/PixelBuffer.h"

#include <cstdlib>
#include <new>

#include "backends/pictures/PictureLimits.h"

namespace vistrane {

namespace {

/// The size of a cache line and of the widest vector register.
constexpr std::size_t rowAlignment = 64;

std::size_t roundUp(std::size_t value) {
    return (value + rowAlignment - 1) / rowAlignment * rowAlignment;
}

} // namespace

void PixelBuffer::Free::operator()(void* memory) const {
    std::free(memory);
}

PixelBuffer* PixelBuffer::make(std::size_t width, std::size_t height) {
    if (!PictureLimits().allows(width, height)) {
        return nullptr;
    }
    const std::size_t bytesPerRow = roundUp(4 * width);
    // For large blocks, calloc gets cleared memory from the system and needs no memset.
    Memory memory(std::calloc(bytesPerRow * height + rowAlignment - 1, 1));
    if (!memory) {
        return nullptr;
    }
    void* start = memory.get();
    std::size_t room = bytesPerRow * height + rowAlignment - 1;
    auto* rows =
        static_cast<std::uint8_t*>(std::align(rowAlignment, bytesPerRow * height, start, room));
    return new (std::nothrow) PixelBuffer(width, height, bytesPerRow, std::move(memory), rows);
}

void PixelBuffer::retain() {
    count_.fetch_add(1, std::memory_order_relaxed);
}

void PixelBuffer::release() {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

void PixelBuffer::markDamaged(NSError reason) {
    if (!damage_) {
        damage_ = std::move(reason);
    }
}

} // namespace vistrane
