#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace vistrane {

/// Owns a file descriptor and closes it at the end of its scope. A negative number is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) = delete;
    ~Descriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    /// The caller closes it.
    int release() { return std::exchange(number_, -1); }

    /// 0, or the error number. Some errors are reported by closing only: a quota, a remote disk.
    int close();

private:
    int number_;
};

/// Writes all bytes, at the descriptor's position or, with `offset`, from that byte of the file.
/// Waits for room in a non-blocking pipe or terminal. Returns 0 or the error number.
int writeAll(int descriptor, const void* bytes, std::size_t count,
             std::optional<std::int64_t> offset = std::nullopt);

/// Brings a file's contents, or a folder's entries, to the disk. Returns 0, also on a file system
/// that has nothing to bring there, or the error number.
int syncToDisk(int descriptor);

} // namespace vistrane
