#pragma once

#include <cstdint>
#include <optional>

#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Turns the times of appends into ticks of the track. One thread.
///
/// The track's timescale is that of the first time other than zero (zero fits every timescale).
/// A movie that has but the time zero takes that of the pictures that were refused, else the zero's
/// own timescale, or 25 where that is 1, as `kCMTimeZero` has it: nothing tells the rate then.
class TrackClock {
public:
    /// Either `ticks` since the session's start, or why the time cannot be taken.
    struct Reading {
        std::int64_t ticks = 0;
        std::optional<NSError> error;
    };

    /// The last tick that a frame may start at: durations and times of a movie file have 31 bits.
    static constexpr std::int64_t lastTick = INT32_MAX - 1;

    void startSession(CMTime time) { start_ = time; }

    /// Times rise strictly and lie on the timescale exactly. A refused time changes nothing.
    Reading take(CMTime time);

    /// A picture was offered for that time, taken or not: a movie of which only the time zero is
    /// taken still learns its rate.
    void noteRate(CMTime time);

    /// Nothing as long as only the time zero was taken.
    std::optional<std::int32_t> timescale() const { return timescale_; }

    /// For a movie that ends here.
    std::int32_t finalTimescale() const;

private:
    CMTime start_ = kCMTimeZero;
    std::optional<std::int32_t> timescale_;
    std::int32_t timescaleOfZero_ = 1;
    std::int32_t notedTimescale_ = 0;
    std::optional<std::int64_t> last_;
};

} // namespace vistrane
