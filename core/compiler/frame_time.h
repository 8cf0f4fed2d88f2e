#pragma once

#include <cstdint>

#include "platform/coremedia/CMTime.h"

namespace vistrane {

/// The presentation time of frame `index` at `rate` frames a second: 0 for frame 0,
/// k / rate + 1 / rate for frame k from 1 on. On purpose the first frame lasts two periods.
constexpr CMTime framePresentationTime(std::int32_t index, std::int32_t rate) {
    return index == 0 ? kCMTimeZero : CMTimeAdd(CMTimeMake(index, rate), CMTimeMake(1, rate));
}

} // namespace vistrane
