#include "platform/foundation/NSString.h"

#include <cassert>
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
    // Accumulates a negative number, because the lowest integer has no positive counterpart.
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

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string_view::npos && dot > 0;
    return hasExtension ? name.substr(dot + 1) : std::string_view();
}

std::string stringWithFormat(std::string_view format,
                             std::initializer_list<FormatArgument> arguments) {
    std::string text;
    auto argument = arguments.begin();
    for (std::size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '%' || at + 1 == format.size()) {
            text += format[at];
            continue;
        }
        assert(argument != arguments.end());
        assert(format[at + 1] == (argument->index() == 0 ? '@' : 'd'));
        if (const auto* part = std::get_if<std::string_view>(argument)) {
            text += *part;
        } else {
            text += std::to_string(std::get<std::int32_t>(*argument));
        }
        ++argument;
        ++at;
    }
    assert(argument == arguments.end());
    return text;
}

} // namespace vistrane
