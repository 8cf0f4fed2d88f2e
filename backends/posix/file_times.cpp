// For systems whose file systems are not known.

#include "backends/posix/file_times.h"

#include <ctime>

namespace vistrane {

bool hasExactTimes(int) {
    return false;
}

std::int64_t timeForFiles() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

} // namespace vistrane
