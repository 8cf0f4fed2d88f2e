#include "backends/movies/TrackClock.h"

#include <numeric>

#include "backends/movies/movie_errors.h"

namespace vistrane {

namespace {

/// The time in ticks of `timescale`; nothing if it is between two ticks or too large.
std::optional<std::int64_t> exactTicks(CMTime time, std::int32_t timescale) {
    const std::int32_t common = std::gcd(time.timescale, timescale);
    const std::int64_t divisor = time.timescale / common;
    const std::int64_t factor = timescale / common;
    if (divisor < 1 || factor < 1) { // never true for valid times; for the static analyser
        return std::nullopt;
    }
    if (time.value % divisor != 0) {
        return std::nullopt;
    }
    constexpr std::int64_t farthest = std::int64_t{1} << 62;
    const std::int64_t quotient = time.value / divisor;
    if (quotient > farthest / factor || quotient < -farthest / factor) {
        return std::nullopt;
    }
    return quotient * factor;
}

TrackClock::Reading refusal(const char* text) {
    return {0, movieError(AVErrorUnknown, text)};
}

} // namespace

TrackClock::Reading TrackClock::take(CMTime time) {
    if (!CMTimeIsValid(time) || !CMTimeIsValid(start_)) {
        return refusal("The picture has no valid time. Choose a frame rate of at least 1");
    }
    const bool isPlainZero = time.value == 0 && start_.value == 0;
    const std::int32_t scale =
        timescale_ ? *timescale_ : (time.value != 0 ? time.timescale : start_.timescale);
    const auto ticks = exactTicks(time, scale);
    const auto startTicks = exactTicks(start_, scale);
    if (!ticks || !startTicks) {
        return refusal("The picture's time is not a multiple of the movie's frame period");
    }
    const std::int64_t sinceStart = *ticks - *startTicks;
    if (sinceStart < 0) {
        return refusal("The picture's time is before the movie's start");
    }
    if (last_ && sinceStart <= *last_) {
        return refusal("The picture's time is not after that of the previous picture");
    }
    if (sinceStart > lastTick) {
        return refusal(
            "The picture's time is beyond the longest movie that the file format allows");
    }
    if (isPlainZero) {
        timescaleOfZero_ = time.timescale;
    } else {
        timescale_ = scale;
    }
    last_ = sinceStart;
    return {sinceStart, std::nullopt};
}

void TrackClock::noteRate(CMTime time) {
    if (CMTimeIsValid(time) && time.value != 0) {
        notedTimescale_ = time.timescale;
    }
}

std::int32_t TrackClock::finalTimescale() const {
    constexpr std::int32_t usualFrameRate = 25;
    if (timescale_) {
        return *timescale_;
    }
    if (notedTimescale_ > 0) {
        return notedTimescale_;
    }
    return timescaleOfZero_ > 1 ? timescaleOfZero_ : usualFrameRate;
}

} // namespace vistrane
