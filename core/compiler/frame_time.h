#pragma once

#include <cstdint>

#include "platform/coremedia/CMTime.h"

namespace vistrane {

/// The presentation time of frame `index` at `rate` frames per second: 0 for frame 0, otherwise
/// index / rate + 1 / rate. The first frame lasts two periods, on purpose.
constexpr CMTime framePresentationTime(std::int32_t index, std::int32_t rate) {
    return index == 0 ? kCMTimeZero : CMTimeAdd(CMTimeMake(index, rate), CMTimeMake(1, rate));
}

} // namespace vistrane
