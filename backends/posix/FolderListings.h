#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <sys/stat.h>

#include "platform/FileNames.h"

namespace vistrane {

/// Lists folders, and answers from the last listing while the folder is the same and unchanged.
///
/// A change of a folder's entries sets its change time, which no program can set back, to the time
/// of the change. The last listing is used only if the change time was so much older than the
/// listing that every later change has another one. That depends on how exact the file system's
/// times are:
///
///   exact    ext4, xfs, btrfs, tmpfs and the like: the time of the kernel's last clock tick, which
///            `timeForFiles` tells
///   coarse   full seconds or less, remote and unknown file systems
///   none     such as the top folder of a FAT volume, whose times are always 0: it is always read
///
/// The folder is read again when the wall clock was set back, and at the latest when a listing is
/// so old that a remote server, or a fault in all this, cannot hide a frame for longer.
///
/// Any thread.
class FolderListings {
public:
    /// The names in the folder, or null if it cannot be listed. The same object as before while the
    /// last listing is used.
    std::shared_ptr<const FileNames> list(const std::string& path);

private:
    /// What tells that a folder is another one, or has changed.
    struct State {
        explicit State(const struct stat& status);
        bool operator==(const State& other) const = default;

        dev_t device;
        ino_t inode;
        /// In nanoseconds since 1970.
        std::int64_t modified;
        std::int64_t changed;
    };

    struct Listing {
        std::string path;
        State state;
        std::shared_ptr<const FileNames> names;
        /// By `timeForFiles`, before the folder was read.
        std::int64_t readAt;
        /// On the monotonic clock, in nanoseconds.
        std::int64_t validUntil;
    };

    std::shared_ptr<const Listing> last() const;

    /// Guards the pointer. Never held while a folder is read.
    mutable std::mutex mutex_;
    /// Null if the next call has to read the folder.
    std::shared_ptr<const Listing> last_;
};

} // namespace vistrane
