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
/// A hidden file in the movie's folder, renamed atomically when it is complete, so that the final
/// name never refers to an incomplete movie. The lock on the hidden file reserves the name against
/// other writers; an unlocked file is the leftover of a process that died. The destructor removes
/// an unpublished file. One thread, except for `discard`.
class MovieFile {
public:
    /// Reserves the name. Fails if anything of that name exists, if another writer has reserved it,
    /// or if the folder is missing or not writable. Removes leftovers from the folder.
    static MovieFileResult create(const std::string& path);

    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// The number of bytes written so far, which is the offset of the next `write`.
    std::uint64_t size() const { return size_; }

    std::optional<NSError> write(const void* bytes, std::size_t count);

    /// Overwrites bytes that were written before.
    std::optional<NSError> writeAt(std::uint64_t offset, const void* bytes, std::size_t count);

    /// Flushes the complete file to the disk and renames it to the movie's name.
    std::optional<NSError> publish();

    /// Removes the hidden file immediately, so that it is never published. Does nothing after
    /// publishing. Any thread.
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

/// A file, or the reason why there is none.
struct MovieFileResult {
    std::unique_ptr<MovieFile> file;
    std::optional<NSError> error;
};

} // namespace vistrane
