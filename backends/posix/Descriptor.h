#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace vistrane {

/// Owns a file descriptor and closes it in the destructor. A negative number means none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) = delete;
    ~Descriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    /// Releases the descriptor without closing it.
    int release() { return std::exchange(number_, -1); }

    /// Returns 0 or the error number. Some errors are reported only by closing, such as quotas and
    /// errors of remote disks.
    int close();

private:
    int number_;
};

/// Repeats a call of the system as long as a signal interrupts it. Returns its last result.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Whether the process can open that many descriptors more.
bool hasFreeDescriptors(std::size_t count);

/// Writes all bytes, at the descriptor's position or, with `offset`, at that position of the file.
/// Waits for room in a non-blocking pipe or terminal. Returns 0 or the error number.
int writeAll(int descriptor, const void* bytes, std::size_t count,
             std::optional<std::int64_t> offset = std::nullopt);

/// Flushes a file's contents, or a folder's entries, to the disk. Returns 0 or the error number;
/// also 0 on a file system that does not support it.
int syncToDisk(int descriptor);

} // namespace vistrane
