#pragma once

#include <algorithm>
#include <chrono>

namespace vistrane {

/// A steady clock that counts the time in which the process was running: timeouts of a camera must
/// not end because the process was stopped, the virtual machine paused or the memory swapped out,
/// when the camera could not have been heard either.
///
/// `now` has to be called at least every half of `longestStep`. A longer step between two calls
/// counts as `longestStep`. Not thread-safe.
class AwakeClock {
public:
    using duration = std::chrono::steady_clock::duration;
    using time_point = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::milliseconds longestStep{1000};

    time_point now() { return at(std::chrono::steady_clock::now()); }

    /// `now` when the steady clock shows `steady`.
    time_point at(time_point steady) {
        now_ += std::clamp<duration>(steady - last_, duration::zero(), longestStep);
        if (steady - last_ > longestStep) {
            lastPause_ = now_;
        }
        last_ = steady;
        return now_;
    }

    /// When the process went on after the last pause; the clock's beginning if there was none.
    time_point lastPause() const { return lastPause_; }

private:
    time_point last_ = std::chrono::steady_clock::now();
    time_point now_ = last_;
    time_point lastPause_ = last_;
};

} // namespace vistrane
