#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace vistrane {

// What stands beside the progress bar of a compile and on the last line during a capture.

/// "300 of 600 frames, 42/s, 0:08 left". Without rate and time if they cannot be estimated yet.
std::string compileProgress(double done, double total, std::chrono::duration<double> elapsed);

struct CaptureProgress {
    int saved = 0;
    /// Stills that the camera did not deliver or that could not be saved.
    int lost = 0;
    /// The number of frames to save, if there is one.
    std::optional<int> count;
    /// The time to the next still.
    std::chrono::duration<double> next{0.0};
};

/// "12 of 100 saved, 1 lost, next in 0:05"
std::string captureProgress(const CaptureProgress& progress);

/// The time from `elapsed` to the next multiple of the interval. Neither is negative.
std::chrono::duration<double> timeToNext(std::chrono::duration<double> elapsed,
                                         std::chrono::seconds interval);

} // namespace vistrane
