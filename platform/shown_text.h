#pragma once

#include <string>
#include <string_view>

namespace vistrane {

/// Converts a path, a name or an argument for a message: one line of valid UTF-8 without terminal
/// control sequences. Each control character and each invalid byte becomes U+FFFD. Not for results,
/// which are printed byte for byte.
std::string shownText(std::string_view text);

} // namespace vistrane
