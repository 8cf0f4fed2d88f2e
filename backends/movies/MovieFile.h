#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
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
///
/// A complete movie is never removed. If it cannot get its name it is kept as "NAME-2.mov" or the
/// next free number, and if that is impossible too under its hidden name. The size of the media
/// box, which is written last, marks a complete file: the next writer in the folder publishes one
/// that a process left when it died, and removes other leftovers.
class MovieFile {
public:
    /// Reserves the name. Fails if anything of that name exists, unless it is a file and `replaces`
    /// is set; if another writer has reserved the name, or if the folder is missing or not
    /// writable. Removes leftovers from the folder.
    static MovieFileResult create(const std::string& path, bool replaces = false);

    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// The number of bytes written so far, which is the offset of the next `write`.
    std::uint64_t size() const { return size_; }

    std::optional<NSError> write(const void* bytes, std::size_t count);

    /// Overwrites bytes that were written before.
    std::optional<NSError> writeAt(std::uint64_t offset, const void* bytes, std::size_t count);

    /// Brings the file to the disk, writes `mediaSize` at `offset`, which completes it, and renames
    /// it to the movie's name. The error says under which name a complete movie was kept.
    std::optional<NSError> publish(std::uint64_t offset, std::span<const std::uint8_t> mediaSize);

    /// Removes the hidden file immediately, so that it is never published. Does nothing once it is
    /// complete: `publish` may still go on, and otherwise the next writer publishes it. Any thread.
    void discard();

private:
    enum class Place { hidden, published, removed };

    MovieFile(std::string path, bool replaces, Descriptor folder, Descriptor file,
              std::string hiddenName, std::string name);

    void setComplete();
    std::optional<NSError> rename();
    std::optional<NSError> unsyncedError(int number);
    NSError posixError(int number, const std::string& what, const std::string& remedy) const;
    std::string keep();
    NSError writeFailure(int number) const;
    void removeHiddenFile();

    const std::string path_;
    const bool replaces_;
    const Descriptor folder_;
    Descriptor file_; // open until the file is published
    const std::string hiddenName_;
    const std::string name_;
    std::uint64_t size_ = 0;

    std::mutex mutex_; // guards the next two together with the entry in the folder
    Place place_ = Place::hidden;
    bool isComplete_ = false;
};

/// A file, or the reason why there is none.
struct MovieFileResult {
    std::unique_ptr<MovieFile> file;
    std::optional<NSError> error;
};

} // namespace vistrane
