#include "platform/foundation/NSString.h"

#include <limits>

namespace vistrane {

namespace {

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

std::int64_t integerValue(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && isSpace(text[at])) {
        ++at;
    }
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        negative = text[at] == '-';
        ++at;
    }
    using Limits = std::numeric_limits<std::int64_t>;
    // Counted on the negative side, which reaches one further.
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        const std::int64_t digit = text[at] - '0';
        if (value < (Limits::min() + digit) / 10) {
            return negative ? Limits::min() : Limits::max();
        }
        value = value * 10 - digit;
    }
    if (negative) {
        return value;
    }
    return value == Limits::min() ? Limits::max() : -value;
}

std::int32_t intValue(std::string_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t value = integerValue(text);
    if (value > Limits::max()) {
        return Limits::max();
    }
    if (value < Limits::min()) {
        return Limits::min();
    }
    return static_cast<std::int32_t>(value);
}

} // namespace vistrane
