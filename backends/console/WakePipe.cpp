#include "backends/console/WakePipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace vistrane {

WakePipe::WakePipe() {
    if (pipe(ends_) != 0) {
        ends_[0] = ends_[1] = -1;
        return;
    }
    for (const int end : ends_) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

WakePipe::~WakePipe() {
    for (const int end : ends_) {
        if (end >= 0) {
            close(end);
        }
    }
}

void WakePipe::wake() const {
    if (ends_[1] >= 0) {
        const char byte = 0;
        // The pipe cannot be full: at most one byte lies in it.
        [[maybe_unused]] const ssize_t written = write(ends_[1], &byte, 1);
    }
}

void WakePipe::clear() const {
    char bytes[16];
    while (read(ends_[0], bytes, sizeof bytes) > 0) {
    }
}

} // namespace vistrane
