#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "backends/posix/Descriptor.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

struct MovieFileResult;

/// The file of an unfinished movie.
///
/// It is a hidden file beside its later name, and is renamed in one step when it is complete, so
/// that under the name there is a complete movie or nothing. The hidden file is locked: the lock
/// reserves the name against every other writer, and an unlocked file is the leftover of a process
/// that died. The destructor removes an unpublished file. One thread, except for `discard`.
class MovieFile {
public:
    /// Reserves the name. Fails when anything of that name exists, when another writer has reserved
    /// it, and when the folder is missing or cannot be written. Removes leftovers from the folder.
    static MovieFileResult create(const std::string& path);

    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// Bytes written so far: the offset of the next `write`.
    std::uint64_t size() const { return size_; }

    std::optional<NSError> write(const void* bytes, std::size_t count);

    /// Overwrites bytes that have been written.
    std::optional<NSError> writeAt(std::uint64_t offset, const void* bytes, std::size_t count);

    /// Brings the complete file to the disk and renames it to the movie's name.
    std::optional<NSError> publish();

    /// Removes the hidden file at once: it is never published. Does nothing once it has been. Any
    /// thread.
    void discard();

private:
    enum class Place { hidden, published, removed };

    MovieFile(std::string path, Descriptor folder, Descriptor file, std::string hiddenName,
              std::string name);

    std::optional<NSError> rename();
    NSError writeFailure(int number) const;
    void removeHiddenFile();

    const std::string path_;
    const Descriptor folder_;
    const Descriptor file_;
    const std::string hiddenName_;
    const std::string name_;
    std::uint64_t size_ = 0;

    std::mutex mutex_; // guards place_ together with the entry in the folder
    Place place_ = Place::hidden;
};

/// A file, or why there is none.
struct MovieFileResult {
    std::unique_ptr<MovieFile> file;
    std::optional<NSError> error;
};

} // namespace vistrane
