#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string_view>

namespace vistrane {

/// A span of time: "90" or "90s", "10m", "1h30m", "M:S" or "H:M:S". Units are in the order h, m, s,
/// each at most once. Numbers have no sign and no fraction. Minutes and seconds behind a colon are
/// at most 59. Nothing for any other text, and beyond 1,000,000 hours.
std::optional<std::chrono::seconds> parseDuration(std::string_view text);

/// A moment of the local time: "HH:MM" or "HH:MM:SS", today or tomorrow, whichever is later than
/// `now`; or with a date, "YYYY-MM-DDTHH:MM" or "YYYY-MM-DD HH:MM:SS". Nothing for any other text,
/// a date that does not exist, or a moment that has passed.
std::optional<std::time_t> parseMoment(std::string_view text, std::time_t now);

} // namespace vistrane
