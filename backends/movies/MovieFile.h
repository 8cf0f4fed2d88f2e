#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

struct MovieFileResult;

/// The file of a movie on its way.
///
/// It lies hidden beside its later name and gets that name in one step when it is whole, so that
/// under the name there is a whole movie or nothing. The hidden file is locked: it reserves the
/// name against every other writer, and an unlocked one is the leftover of a process that died.
/// A file that goes away without having got its name is removed. One thread, except `giveUp`.
class MovieFile {
public:
    /// Reserves the name. Fails when anything has that name, when another writer has reserved it,
    /// and when the folder is missing or cannot be written. Removes leftovers from the folder.
    static MovieFileResult create(const std::string& path);

    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// Bytes written so far: the offset of the next `write`.
    std::uint64_t size() const { return size_; }

    std::optional<NSError> write(const void* bytes, std::size_t count);

    /// Replaces bytes that have been written.
    std::optional<NSError> writeAt(std::uint64_t offset, const void* bytes, std::size_t count);

    /// Everything is written: brings it to the disk and gives the file its name.
    std::optional<NSError> giveName();

    /// Removes the hidden file at once; it gets its name never. Does nothing once it has it. Any
    /// thread.
    void giveUp();

private:
    enum class Place { hidden, named, gone };

    MovieFile(std::string path, int folder, int file, std::string hiddenName, std::string name);

    std::optional<NSError> rename();
    NSError writeFailure(int number) const;
    void removeHiddenFile();

    const std::string path_;
    const int folder_;
    const int file_;
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
