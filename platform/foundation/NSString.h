#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vistrane {

/// The leading integer of a text as a text field reads it: white space is skipped, one sign is
/// taken, digits are read up to the first other character. No digits give 0; a number out of range
/// gives the nearest value in range.
std::int32_t intValue(std::string_view text);
std::int64_t integerValue(std::string_view text);

} // namespace vistrane
