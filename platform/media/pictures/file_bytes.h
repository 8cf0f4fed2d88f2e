#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/foundation/NSError.h"
#include "platform/media/pictures/ByteArray.h"

namespace vistrane {

/// The bytes of a file, or why there are none.
struct FileBytesResult {
    ByteArray bytes;
    std::optional<NSError> error;
};

/// Reads a regular file of at most `largestFile` bytes. Never waits for a pipe or a device. A file
/// that changes its length meanwhile gives what was there of its first length: whether that is a
/// whole picture shows when it is parsed.
FileBytesResult readFile(const std::string& path, std::uint64_t largestFile);

/// Writes a file where it stands, replacing what it holds; mode 0666 less the umask when new. A
/// file that could not be written whole is removed, so that no half picture stays behind. Refuses
/// what is no regular file, without waiting for it. Links are followed.
std::optional<NSError> writeFileInPlace(const std::string& path,
                                        std::span<const std::uint8_t> bytes);

/// Writes a new file beside `path`, has it stored, and gives it that name in one step. On failure
/// the old file stays as it is.
std::optional<NSError> replaceFile(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace vistrane
