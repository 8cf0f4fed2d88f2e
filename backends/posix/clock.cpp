#include "backends/posix/clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace vistrane {

std::int64_t monotonicNow() {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

NSDate wallClockNow() {
    using namespace std::chrono;
    return {duration<double>(system_clock::now().time_since_epoch()).count()};
}

std::int64_t monotonicMomentOf(NSDate date) {
    const double remaining = date.timeIntervalSince1970 - wallClockNow().timeIntervalSince1970;
    if (!(remaining > 0.0)) {
        return monotonicNow();
    }
    constexpr double century = 3.2e9;
    return remaining > century ? neverInNanoseconds
                               : monotonicNow() + std::llround(remaining * 1e9);
}

int millisecondsUntil(std::int64_t moment, int longest) {
    constexpr std::int64_t nanosecondsOfOne = 1000000;
    const std::int64_t left = std::max<std::int64_t>(moment - monotonicNow(), 0);
    const std::int64_t milliseconds = left / nanosecondsOfOne + (left % nanosecondsOfOne > 0);
    return static_cast<int>(std::min<std::int64_t>(milliseconds, longest));
}

} // namespace vistrane
