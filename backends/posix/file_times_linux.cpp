#include "backends/posix/file_times.h"

#include <cstdint>
#include <ctime>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace vistrane {

bool hasExactTimes(int file) {
    struct statfs status {};
    if (fstatfs(file, &status) != 0) {
        return false;
    }
    // These are not in <linux/magic.h> of Debian 12.
    constexpr std::uint32_t zfs = 0x2fc12fc1;
    constexpr std::uint32_t bcachefs = 0xca451a4e;
    switch (static_cast<std::uint32_t>(status.f_type)) {
    case EXT4_SUPER_MAGIC:
    case XFS_SUPER_MAGIC:
    case BTRFS_SUPER_MAGIC:
    case TMPFS_MAGIC:
    case F2FS_SUPER_MAGIC:
    case OVERLAYFS_SUPER_MAGIC:
    case zfs:
    case bcachefs:
        return true;
    default:
        return false;
    }
}

std::int64_t timeForFiles() {
    // That of the last tick. It may be long ago: a busy virtual machine was seen to lag by 15 ms.
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

} // namespace vistrane
