#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "backends/pictures/ByteArray.h"
#include "backends/posix/Descriptor.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Identifies one state of a file.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::uint64_t length = 0;
    /// The last changes of the content and of the inode (mtime, ctime), in nanoseconds since 1970.
    std::int64_t changed = 0;
    std::int64_t touched = 0;

    bool operator==(const FileState&) const = default;

    /// Whether any further change gives a different state. Some file systems count in seconds, so
    /// two changes in quick succession may give the same state.
    bool isSettled() const;
};

/// The bytes of a file, or why they could not be read.
struct FileBytesResult {
    ByteArray bytes;
    std::optional<NSError> error;
};

/// A regular file, open for reading.
class OpenFile {
public:
    /// Opens a file. Never blocks on a pipe or a device. Refuses files of more than `largestFile`
    /// bytes.
    static std::variant<OpenFile, NSError> at(const std::string& path, std::uint64_t largestFile);

    /// The state when the file was opened.
    const FileState& state() const { return state_; }

    /// Whether the file has exactly these bytes. False if it cannot be read.
    bool holds(std::span<const std::uint8_t> bytes) const;

    /// Reads the whole file, or only its first part if it does not begin with `signature`. Call
    /// once. If the file is truncated meanwhile, the result is shorter. The parser refuses both.
    FileBytesResult read(std::span<const std::uint8_t> signature);

private:
    OpenFile(Descriptor descriptor, std::string path, const FileState& state);

    Descriptor descriptor_;
    std::string path_;
    FileState state_;
};

/// Writes a file in place, replacing its content; a new file gets mode 0666 minus the umask. If
/// writing fails, the file is removed, so that no partial picture is left. Refuses paths that are
/// not regular files, without blocking. Follows links.
std::optional<NSError> writeFileInPlace(const std::string& path,
                                        std::span<const std::uint8_t> bytes);

} // namespace vistrane
