#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vistrane {

/// Tells when a disk has room for few more frames: once below 100 and once below 10, and again
/// after there was room for 100.
class RoomWarning {
public:
    /// A frame of `size` bytes was saved, and its disk has `room` bytes left. Returns a sentence if
    /// the user is to be warned.
    std::optional<std::string> frameWasSaved(std::uint64_t size, std::uint64_t room);

private:
    /// The lowest limit that has been reached.
    std::uint64_t reached_ = UINT64_MAX;
};

/// The size of a file, and the bytes that this user may still write to its disk.
struct FileRoom {
    std::uint64_t size = 0;
    std::uint64_t room = 0;
};

/// Nothing if that cannot be found out.
std::optional<FileRoom> fileRoom(const std::string& path);

} // namespace vistrane
