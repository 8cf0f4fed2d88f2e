#pragma once

#include <cstdint>
#include <numeric>

namespace vistrane {

/// A rational time: `value` / `timescale` seconds. A timescale of 0 or less makes it invalid.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;
    bool operator==(const CMTime&) const = default;
};

inline constexpr CMTime kCMTimeZero{0, 1};

constexpr bool CMTimeIsValid(CMTime time) {
    return time.timescale > 0;
}

constexpr CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) {
    return {value, timescale};
}

/// The exact sum if the least common timescale fits in 32 bits, otherwise rounded down to the finer
/// of the two timescales. Equal timescales are kept. An invalid time makes the sum invalid.
constexpr CMTime CMTimeAdd(CMTime a, CMTime b) {
    if (!CMTimeIsValid(a) || !CMTimeIsValid(b)) {
        return {};
    }
    if (a.timescale == b.timescale) {
        return {a.value + b.value, a.timescale};
    }
    std::int64_t scale = std::lcm<std::int64_t, std::int64_t>(a.timescale, b.timescale);
    if (scale > INT32_MAX) {
        scale = a.timescale > b.timescale ? a.timescale : b.timescale;
    }
    const auto scaled = [scale](CMTime t) {
        return t.value / t.timescale * scale + t.value % t.timescale * scale / t.timescale;
    };
    return {scaled(a) + scaled(b), static_cast<std::int32_t>(scale)};
}

} // namespace vistrane
