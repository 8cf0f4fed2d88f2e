#pragma once

#include <cstdint>
#include <optional>

#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Converts the times of appends to ticks of the track. One thread.
///
/// The first time other than zero determines the track's timescale (zero fits every timescale). If
/// zero is the only accepted time, no time tells the frame rate: the timescale is then that of the
/// refused pictures, otherwise that of the zero, or 25 if that is 1, as in `kCMTimeZero`.
class TrackClock {
public:
    /// `ticks` since the session's start, or why the time is refused.
    struct Reading {
        std::int64_t ticks = 0;
        std::optional<NSError> error;
    };

    /// The last tick at which a frame may start: times in a movie file have 31 bits.
    static constexpr std::int64_t lastTick = INT32_MAX - 1;

    void startSession(CMTime time) { start_ = time; }

    /// Times must increase strictly and be whole ticks. A refused time changes nothing.
    Reading take(CMTime time);

    /// Remembers the timescale of a picture that may be refused, for `finalTimescale`.
    void noteRate(CMTime time);

    /// Nothing until a time other than zero is accepted.
    std::optional<std::int32_t> timescale() const { return timescale_; }

    /// The timescale if the movie ends now.
    std::int32_t finalTimescale() const;

private:
    CMTime start_ = kCMTimeZero;
    std::optional<std::int32_t> timescale_;
    std::int32_t timescaleOfZero_ = 1;
    std::int32_t notedTimescale_ = 0;
    std::optional<std::int64_t> last_;
};

} // namespace vistrane
