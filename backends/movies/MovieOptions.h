#pragma once

#include <string>

namespace vistrane {

/// How movies are compressed.
///
/// The defaults are those of a usual libx264 run (preset medium, constant rate factor 23) in
/// quality and size, at a third of its time; `H264Encoder.cpp` tells how.
struct MovieOptions {
    /// The name of an encoder of libavcodec; empty takes libx264, and else whichever H.264
    /// encoder is there.
    std::string encoder;
    /// libx264's preset, taken as it is; empty takes this program's own settings.
    std::string preset;
    /// 0 to 51, lower is better and larger.
    double constantRateFactor = 21.75;
    /// Threads of the encoder; 0 leaves it to the encoder.
    int threads = 0;
    /// The encoder's threads leave the processor to the others when there is not enough for all.
    bool givesWay = false;
};

} // namespace vistrane
