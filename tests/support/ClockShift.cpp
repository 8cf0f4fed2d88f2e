#include "tests/support/ClockShift.h"

#include <atomic>
#include <ctime>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<std::time_t> shift{0};

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC) {
        time->tv_sec += shift;
    }
    return static_cast<int>(result);
}

namespace vistrane {

ClockShift::~ClockShift() {
    shift = 0;
}

// The clock is the process' own, but ends with the object.
void ClockShift::add(double seconds) { // NOLINT(readability-convert-member-functions-to-static)
    shift += static_cast<std::time_t>(seconds);
}

} // namespace vistrane
