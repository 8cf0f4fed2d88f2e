#include "backends/posix/FolderListings.h"

#include <optional>
#include <utility>

#include <fcntl.h>

#include "backends/posix/Descriptor.h"
#include "backends/posix/clock.h"
#include "backends/posix/entry_names.h"
#include "backends/posix/file_times.h"

namespace vistrane {

namespace {

constexpr std::int64_t milliseconds = 1000000;
constexpr std::int64_t seconds = 1000 * milliseconds;

struct Exactness {
    /// How much older than a listing the last change has to be. Twice the longest distance between
    /// two times of the file system; exact ones have none from `timeForFiles`, and get a margin.
    std::int64_t settled;
    /// How long a listing is used.
    std::int64_t lifetime;
};

constexpr Exactness exact{20 * milliseconds, 60 * seconds};
/// FAT has times of two seconds.
constexpr Exactness coarse{4 * seconds, 2 * seconds};

std::int64_t nanosecondsOf(const timespec& time) {
    return time.tv_sec * seconds + time.tv_nsec;
}

} // namespace

FolderListings::State::State(const struct stat& status)
    : device(status.st_dev), inode(status.st_ino), modified(nanosecondsOf(status.st_mtim)),
      changed(nanosecondsOf(status.st_ctim)) {}

std::shared_ptr<const FileNames> FolderListings::list(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return nullptr;
    }
    const std::int64_t now = timeForFiles();
    const auto last = this->last();
    if (last && last->path == path && last->state == State(status) && now >= last->readAt &&
        monotonicNow() < last->validUntil) {
        return last->names;
    }

    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    // The state before the folder is read: a change while it is read has to be another state.
    const bool hasState = folder.isOpen() && fstat(folder.number(), &status) == 0;
    std::optional<FileNames> read =
        folder.isOpen() ? entryNames(folder.number()) : std::optional<FileNames>();
    if (!read) {
        return nullptr;
    }
    auto names = std::make_shared<const FileNames>(std::move(*read));
    std::shared_ptr<const Listing> listing;
    if (hasState) {
        const State state(status);
        // An ext4 volume may have times of full seconds.
        const bool isExact = (state.changed % seconds != 0 || state.modified % seconds != 0) &&
                             hasExactTimes(folder.number());
        const Exactness& exactness = isExact ? exact : coarse;
        const bool hasTimes = state.changed > 0;
        if (hasTimes && state.changed < now - exactness.settled) {
            listing = std::make_shared<const Listing>(
                Listing{path, state, names, now, monotonicNow() + exactness.lifetime});
        }
    }
    const std::lock_guard lock(mutex_);
    last_ = std::move(listing);
    return names;
}

std::shared_ptr<const FolderListings::Listing> FolderListings::last() const {
    const std::lock_guard lock(mutex_);
    return last_;
}

} // namespace vistrane
