#pragma once

#include <string>

namespace vistrane {

/// How and where movies are made. The defaults reach the quality and size of libx264's defaults
/// (preset medium, constant rate factor 23) in a third of the time, see `H264Encoder.cpp`.
struct MovieOptions {
    /// One of libx264's presets; empty for this program's own settings.
    std::string preset;
    /// Constant rate factor, 0 to 51. A lower value means better quality and a larger file.
    double constantRateFactor = 21.75;
    /// Where to write every movie instead of the writer's own path; empty for that one.
    std::string path;
    /// Replaces a file of the movie's name, in one step when the movie is complete.
    bool replaces = false;
    /// Runs the encoder's threads at low priority, so that the program's other threads go first.
    bool isLowPriority = false;
};

} // namespace vistrane
