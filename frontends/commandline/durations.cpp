#include "frontends/commandline/durations.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace vistrane {

namespace {

constexpr std::int64_t mostHours = 1'000'000;
constexpr std::int64_t mostSeconds = mostHours * 3600;

/// Reads digits and removes them from the text. Nothing if there are none, or too many.
std::optional<std::int64_t> takeNumber(std::string_view& text) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || number < 0 || text.front() == '-' || number > mostSeconds) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(at - text.data()));
    return number;
}

/// Reads exactly `count` digits into `number` and removes them.
bool takeDigits(std::string_view& text, std::size_t count, int& number) {
    if (text.size() < count || text.substr(0, count).find_first_not_of("0123456789") != text.npos) {
        return false;
    }
    std::from_chars(text.data(), text.data() + count, number);
    text.remove_prefix(count);
    return true;
}

bool take(std::string_view& text, char expected) {
    if (text.empty() || text.front() != expected) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

std::optional<std::chrono::seconds> ofFields(std::string_view text) {
    std::optional<std::int64_t> total = takeNumber(text);
    int colons = 0;
    while (total && !text.empty()) {
        std::optional<std::int64_t> next;
        if (++colons <= 2 && take(text, ':') && !text.empty()) {
            next = takeNumber(text);
        }
        total = next && *next <= 59 ? std::optional(*total * 60 + *next) : std::nullopt;
    }
    return total ? std::optional(std::chrono::seconds(*total)) : std::nullopt;
}

std::optional<std::chrono::seconds> ofUnits(std::string_view text) {
    struct Unit {
        char name;
        std::int64_t seconds;
    };
    constexpr std::array units{Unit{'h', 3600}, Unit{'m', 60}, Unit{'s', 1}};
    std::int64_t total = 0;
    auto unit = units.begin();
    do {
        const std::optional<std::int64_t> number = text.empty() ? std::nullopt : takeNumber(text);
        while (unit != units.end() && !text.empty() && unit->name != text.front()) {
            ++unit;
        }
        if (!number || text.empty() || unit == units.end()) {
            return std::nullopt;
        }
        text.remove_prefix(1);
        total += *number * unit->seconds;
        ++unit;
    } while (!text.empty());
    return std::chrono::seconds(total);
}

} // namespace

std::optional<std::chrono::seconds> parseDuration(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const bool hasUnits = text.find_first_of("hms") != text.npos;
    const auto duration = hasUnits ? ofUnits(text) : ofFields(text);
    return duration && *duration <= std::chrono::hours(mostHours) ? duration : std::nullopt;
}

std::optional<std::time_t> parseMoment(std::string_view text, std::time_t now) {
    std::tm moment{};
    ::localtime_r(&now, &moment);
    const bool hasDate = text.size() > 10;
    if (hasDate) {
        int year = 0;
        int month = 0;
        if (!takeDigits(text, 4, year) || !take(text, '-') || !takeDigits(text, 2, month) ||
            !take(text, '-') || !takeDigits(text, 2, moment.tm_mday) ||
            !(take(text, 'T') || take(text, ' '))) {
            return std::nullopt;
        }
        moment.tm_year = year - 1900;
        moment.tm_mon = month - 1;
    }
    moment.tm_sec = 0;
    if (!takeDigits(text, 2, moment.tm_hour) || !take(text, ':') ||
        !takeDigits(text, 2, moment.tm_min) ||
        (!text.empty() && !(take(text, ':') && takeDigits(text, 2, moment.tm_sec)))) {
        return std::nullopt;
    }
    if (!text.empty() || moment.tm_hour > 23 || moment.tm_min > 59 || moment.tm_sec > 59) {
        return std::nullopt;
    }
    const auto timeOf = [](std::tm parts) {
        parts.tm_isdst = -1; // as the time zone has it on that day
        return std::pair(::mktime(&parts), parts);
    };
    auto [time, parts] = timeOf(moment);
    if (hasDate && (parts.tm_mday != moment.tm_mday || parts.tm_mon != moment.tm_mon)) {
        return std::nullopt; // no such day
    }
    if (!hasDate && time <= now) {
        ++moment.tm_mday;
        time = timeOf(moment).first;
    }
    return time > now ? std::optional(time) : std::nullopt;
}

} // namespace vistrane
