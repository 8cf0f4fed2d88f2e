#include "backends/posix/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vistrane {

int Descriptor::close() {
    // close() has released the descriptor even if a signal interrupted it.
    return isOpen() && ::close(release()) != 0 && errno != EINTR ? errno : 0;
}

bool hasFreeDescriptors(std::size_t count) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return true;
    }
    std::size_t free = 0;
    for (rlim_t number = 0; number < limit.rlim_cur && free < count; ++number) {
        free += ::fcntl(static_cast<int>(number), F_GETFD) == -1 ? 1 : 0;
    }
    return free >= count;
}

int writeAll(int descriptor, const void* bytes, std::size_t count,
             std::optional<std::int64_t> offset) {
    const auto* next = static_cast<const unsigned char*>(bytes);
    while (count > 0) {
        const std::size_t part = std::min<std::size_t>(count, SSIZE_MAX);
        const ssize_t written =
            offset ? ::pwrite(descriptor, next, part, *offset) : ::write(descriptor, next, part);
        if (written > 0) {
            next += written;
            count -= static_cast<std::size_t>(written);
            if (offset) {
                *offset += written;
            }
        } else if (written == 0) {
            return ENOSPC;
        } else if (errno == EAGAIN) {
            pollfd output{descriptor, POLLOUT, 0};
            ::poll(&output, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int syncToDisk(int descriptor) {
    const int result = uninterrupted([descriptor] { return ::fsync(descriptor); });
    return result == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace vistrane
