#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "backends/pictures/ByteArray.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What tells one state of a file from another.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::uint64_t length = 0;
    /// When its bytes, and when anything about it, were last changed: nanoseconds since 1970.
    std::int64_t changed = 0;
    std::int64_t touched = 0;

    bool operator==(const FileState&) const = default;

    /// Whether another change would show. Of a file that was changed a moment ago it might not, as
    /// some systems count in seconds only.
    bool isSettled() const;
};

/// The bytes of a file, or why there are none.
struct FileBytesResult {
    ByteArray bytes;
    std::optional<NSError> error;
};

/// A regular file, open for reading; closed at the end.
class OpenFile {
public:
    /// Never waits for a pipe or a device. Refuses files of more than `largestFile` bytes.
    static std::variant<OpenFile, NSError> at(const std::string& path, std::uint64_t largestFile);

    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) = delete;
    ~OpenFile();

    /// When it was opened.
    const FileState& state() const { return state_; }

    /// All of it; to be called once. A file that changes its length meanwhile gives what was there
    /// of its first length: whether that is a whole picture shows when it is parsed.
    FileBytesResult read();

private:
    OpenFile(int descriptor, std::string path, const FileState& state);

    int descriptor_;
    std::string path_;
    FileState state_;
};

/// Writes a file where it stands, replacing what it holds; mode 0666 less the umask when new. A
/// file that could not be written whole is removed, so that no half picture stays behind. Refuses
/// what is no regular file, without waiting for it. Links are followed.
std::optional<NSError> writeFileInPlace(const std::string& path,
                                        std::span<const std::uint8_t> bytes);

/// Writes a new file beside `path`, has it stored, and gives it that name in one step. On failure
/// the old file stays as it is.
std::optional<NSError> replaceFile(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace vistrane
