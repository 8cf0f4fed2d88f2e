#include "backends/sim/SimFoundation.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vistrane {

namespace {

std::string folded(std::string_view text) {
    std::string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), [](char byte) {
        return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
    });
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

NSComparisonResult orderTexts(std::string_view first, std::string_view second) {
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    auto result = NSOrderedSame;
    while (result == NSOrderedSame && !first.empty() && !second.empty()) {
        if (isDigit(first.front()) && isDigit(second.front())) {
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

NSComparisonResult SimLocale::compare(const std::string& first, const std::string& second,
                                      std::uint32_t, NSRange range) const {
    // The part of the range that lies in the string.
    const std::string_view part =
        std::string_view(first).substr(std::min(range.location, first.size()), range.length);
    const NSComparisonResult result = orderTexts(folded(part), folded(second));
    return result == NSOrderedSame ? order(part, std::string_view(second)) : result;
}

} // namespace vistrane
