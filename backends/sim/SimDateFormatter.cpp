#include "backends/sim/SimDateFormatter.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace vistrane {

namespace {

using std::chrono::days;
using std::chrono::January;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;

sys_days newYear(int number) {
    return sys_days(year(number) / January / 1);
}

sys_days firstWeek(int number, SimWeekRule rule) {
    const sys_days first = newYear(number);
    const unsigned daysIntoWeek = (weekday(first).c_encoding() + 7 - rule.firstDay) % 7;
    const sys_days start = first - days(daysIntoWeek);
    return 7 - daysIntoWeek >= rule.minimalDays ? start : start + days(7);
}

int weekYear(sys_days day, int calendarYear, SimWeekRule rule) {
    if (day >= firstWeek(calendarYear + 1, rule)) {
        return calendarYear + 1;
    }
    return day < firstWeek(calendarYear, rule) ? calendarYear - 1 : calendarYear;
}

std::string digits(std::int64_t number, std::size_t least) {
    std::string text = std::to_string(number);
    return text.size() < least ? std::string(least - text.size(), '0') + text : text;
}

std::string yearDigits(int number, std::size_t letters) {
    return letters == 2 ? digits(number % 100, 2) : digits(number, letters);
}

} // namespace

void SimDateFormatter::setDateFormat(const std::string& pattern) {
    call("setDateFormat: " + pattern);
    pattern_ = pattern;
}

std::string SimDateFormatter::stringFromDate(NSDate date) const {
    call("stringFromDate: " + decimal(date.timeIntervalSince1970));
    if (rules_.fixedAnswer) {
        return *rules_.fixedAnswer;
    }
    const auto seconds = static_cast<std::int64_t>(std::floor(date.timeIntervalSince1970));
    const auto dayNumber =
        static_cast<int>(seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400);
    const sys_days day{days(dayNumber)};
    const std::int64_t second = seconds - std::int64_t{86400} * dayNumber;
    const std::chrono::year_month_day calendar(day);
    const int calendarYear = static_cast<int>(calendar.year());

    std::string text;
    for (std::size_t at = 0; at < pattern_.size();) {
        const char letter = pattern_[at];
        std::size_t end = pattern_.find_first_not_of(letter, at);
        end = end == std::string::npos ? pattern_.size() : end;
        const std::size_t letters = end - at;
        switch (letter) {
        case 'Y':
            text += yearDigits(weekYear(day, calendarYear, rules_.weeks), letters);
            break;
        case 'y':
            text += yearDigits(calendarYear, letters);
            break;
        case 'M':
            text += digits(static_cast<unsigned>(calendar.month()), letters);
            break;
        case 'd':
            text += digits(static_cast<unsigned>(calendar.day()), letters);
            break;
        case 'D':
            text += digits((day - newYear(calendarYear)).count() + 1, letters);
            break;
        case 'H':
            text += digits(second / 3600, letters);
            break;
        case 'm':
            text += digits(second / 60 % 60, letters);
            break;
        case 's':
            text += digits(second % 60, letters);
            break;
        default:
            text.append(letters, letter);
        }
        at = end;
    }
    return text;
}

} // namespace vistrane
