#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace vistrane {

/// The leading integer of a text as a text field reads it: white space is skipped, one sign is
/// taken, digits are read up to the first other character. No digits give 0; a number out of range
/// gives the nearest value in range.
std::int32_t intValue(std::string_view text);
std::int64_t integerValue(std::string_view text);

/// The part after the last dot of the last path component; empty without a dot.
std::string_view pathExtension(std::string_view path);

/// The value for a placeholder of a format: a text for "%@", a number for "%d".
using FormatArgument = std::variant<std::string_view, std::int32_t>;

/// Fills the placeholders of `format`, "%@" and "%d", with the arguments in their order. The
/// arguments are taken byte for byte. Placeholders and arguments agree in number and kind.
std::string stringWithFormat(std::string_view format,
                             std::initializer_list<FormatArgument> arguments);

} // namespace vistrane
