#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

namespace vistrane {

/// A dynamic array of bytes. Unlike a vector, it does not clear its memory, because pictures are
/// overwritten completely, and it does not throw if there is not enough memory.
class ByteArray {
public:
    ByteArray() = default;

    /// `length` bytes of unspecified content; nothing if there is not enough memory.
    static std::optional<ByteArray> ofLength(std::size_t length) {
        ByteArray result;
        if (!result.reserve(length)) {
            return std::nullopt;
        }
        result.length_ = length;
        return result;
    }

    static std::optional<ByteArray> copyOf(std::span<const std::uint8_t> bytes) {
        ByteArray result;
        if (!result.append(bytes)) {
            return std::nullopt;
        }
        return result;
    }

    std::uint8_t* data() { return memory_.get(); }
    const std::uint8_t* data() const { return memory_.get(); }
    std::size_t length() const { return length_; }
    std::span<const std::uint8_t> bytes() const { return {memory_.get(), length_}; }

    /// Returns false, and changes nothing, if there is not enough memory.
    [[nodiscard]] bool append(std::span<const std::uint8_t> more) {
        if (more.empty()) {
            return true;
        }
        if (more.size() > SIZE_MAX / 2 - length_ || !reserve(length_ + more.size())) {
            return false;
        }
        std::memcpy(memory_.get() + length_, more.data(), more.size());
        length_ += more.size();
        return true;
    }

    /// Removes the bytes from `length` on. Never adds bytes.
    void shorten(std::size_t length) {
        if (length < length_) {
            length_ = length;
        }
    }

private:
    struct Free {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };

    bool reserve(std::size_t length) {
        if (length <= capacity_ && memory_) {
            return true;
        }
        // The first allocation is exact; later ones leave room for growth.
        std::size_t wanted = capacity_ == 0 ? length : length + length / 2;
        wanted = wanted < 1 ? 1 : wanted;
        auto* larger = static_cast<std::uint8_t*>(std::realloc(memory_.get(), wanted));
        if (larger == nullptr) {
            return false;
        }
        static_cast<void>(memory_.release());
        memory_.reset(larger);
        capacity_ = wanted;
        return true;
    }

    std::unique_ptr<std::uint8_t, Free> memory_;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace vistrane
