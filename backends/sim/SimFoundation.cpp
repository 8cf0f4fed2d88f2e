#include "backends/sim/SimFoundation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <utility>

namespace vistrane {

namespace {

std::string folded(std::string_view text, std::uint32_t options) {
    std::string folded(text);
    for (char& letter : folded) {
        const bool isCapital = letter >= 'A' && letter <= 'Z';
        if (isCapital && (options & NSCaseInsensitiveSearch) != 0) {
            letter = static_cast<char>(letter + ('a' - 'A'));
        }
    }
    return folded;
}

/// Takes a digit run off the text and returns it without leading zeros.
std::string_view takeNumber(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
    std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

template <class Value>
NSComparisonResult order(const Value& first, const Value& second) {
    return first < second   ? NSOrderedAscending
           : second < first ? NSOrderedDescending
                            : NSOrderedSame;
}

NSComparisonResult orderTexts(std::string_view first, std::string_view second, bool isNumeric) {
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    auto result = NSOrderedSame;
    while (result == NSOrderedSame && !first.empty() && !second.empty()) {
        if (isNumeric && isDigit(first.front()) && isDigit(second.front())) {
            const std::string_view number = takeNumber(first);
            const std::string_view other = takeNumber(second);
            result = order(std::pair(number.size(), number), std::pair(other.size(), other));
        } else {
            result = order(first.substr(0, 1), second.substr(0, 1));
            first.remove_prefix(1);
            second.remove_prefix(1);
        }
    }
    return result == NSOrderedSame ? order(first.size(), second.size()) : result;
}

} // namespace

std::string SimDateFormatter::stringFromDate(NSDate date) const {
    call("stringFromDate: %", date.timeIntervalSince1970);
    if (answer_) {
        return *answer_;
    }
    const auto utc = [](double seconds) {
        const auto time = static_cast<std::time_t>(seconds);
        return *std::gmtime(&time); // NOLINT(concurrency-mt-unsafe): the main thread's only
    };
    const std::tm at = utc(date.timeIntervalSince1970);
    // In the United States a week is of the year of its Saturday.
    const int year = utc(date.timeIntervalSince1970 + (6 - at.tm_wday) * 86400.0).tm_year + 1900;
    const bool isFrame = pattern_ == "YY-MM-dd-HH-mm-ss";
    std::array<char, 80> stamp{};
    std::snprintf(stamp.data(), stamp.size(),
                  isFrame ? "%02d-%02d-%02d-%02d-%02d-%02d" : "%04d%02d%02d-%02d%02d%02d",
                  isFrame ? year % 100 : year, at.tm_mon + 1, isFrame ? at.tm_mday : at.tm_yday + 1,
                  at.tm_hour, at.tm_min, at.tm_sec);
    return isFrame || pattern_ == "YYYYMMDD-HHmmss" ? stamp.data() : pattern_;
}

NSComparisonResult SimLocale::compare(const std::string& first, const std::string& second,
                                      std::uint32_t options, NSRange range) const {
    // The part of the range that lies in the string.
    const std::string_view part =
        std::string_view(first).substr(std::min(range.location, first.size()), range.length);
    const NSComparisonResult result = orderTexts(folded(part, options), folded(second, options),
                                                 (options & NSNumericSearch) != 0);
    const bool breaksTies = (options & NSForcedOrderingSearch) != 0;
    return result == NSOrderedSame && breaksTies ? order(part, std::string_view(second)) : result;
}

} // namespace vistrane
