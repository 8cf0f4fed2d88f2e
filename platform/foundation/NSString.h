#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace vistrane {

/// The leading integer of a text, as a text field reads it: optional white space, an optional sign,
/// digits up to the first other character. 0 without digits; numbers out of range are clamped.
std::int32_t intValue(std::string_view text);
std::int64_t integerValue(std::string_view text);

/// The part after the last dot of the last path component. Empty without a dot, and when the only
/// dot is the first character, as in ".png".
std::string_view pathExtension(std::string_view path);

/// The argument for a placeholder of a format: a text for "%@", a number for "%d".
using FormatArgument = std::variant<std::string_view, std::int32_t>;

/// Replaces the placeholders of `format`, "%@" and "%d", by the arguments, in order and byte for
/// byte. Placeholders and arguments must agree in number and kind.
std::string stringWithFormat(std::string_view format,
                             std::initializer_list<FormatArgument> arguments);

} // namespace vistrane
