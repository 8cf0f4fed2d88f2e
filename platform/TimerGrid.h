#pragma once

#include <cmath>
#include <cstdint>

namespace vistrane {

/// The fire dates of a repeating timer: first + n * interval, in nanoseconds of a monotonic clock.
/// Shared by every run loop.
class TimerGrid {
public:
    /// `interval` in seconds; 0 or less (or NaN) counts as 0.0001 s. The first date is one interval
    /// after `now`.
    TimerGrid(std::int64_t now, double interval)
        : start_(now), interval_(interval > 0.0 ? interval : 0.0001) {}

    std::int64_t next() const { return date(number_); }

    /// Advances to the first date after `now`. The dates that passed merge into the current tick.
    void passUpTo(std::int64_t now) {
        const double passed = static_cast<double>(now - start_) / (interval_ * 1e9);
        const auto estimate = static_cast<std::int64_t>(std::floor(passed));
        // The estimate may be off by one in either direction, so compare the dates.
        number_ = estimate > number_ ? estimate - 1 : number_;
        do {
            ++number_;
        } while (date(number_) <= now);
    }

private:
    std::int64_t date(std::int64_t number) const {
        return start_ + std::llround(static_cast<double>(number) * interval_ * 1e9);
    }

    std::int64_t start_;
    double interval_;
    std::int64_t number_ = 1;
};

} // namespace vistrane
