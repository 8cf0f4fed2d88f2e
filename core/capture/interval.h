#pragma once

#include <cstdint>

namespace vistrane {

/// The highest value of the hours field, and that of the minutes and seconds fields.
inline constexpr std::int32_t highestHours = 999;
inline constexpr std::int32_t highestSixtieths = 59;

/// The interval in seconds. At most 3,599,999 for fields in range.
constexpr std::int32_t totalSeconds(std::int32_t hours, std::int32_t minutes,
                                    std::int32_t seconds) {
    return hours * 3600 + minutes * 60 + seconds;
}

} // namespace vistrane
