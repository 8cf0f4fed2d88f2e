#pragma once

#include <cstdint>

#include "platform/coremedia/CMTime.h"

namespace vistrane {

/// When frame `index` is shown at `rate` frames a second: frame 0 at zero, frame k from 1 on at
/// k / rate + 1 / rate. On purpose the first frame lasts two periods.
constexpr CMTime framePresentationTime(std::int32_t index, std::int32_t rate) {
    return index == 0 ? kCMTimeZero : CMTimeAdd(CMTimeMake(index, rate), CMTimeMake(1, rate));
}

} // namespace vistrane
