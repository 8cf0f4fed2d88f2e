#pragma once

#include <string>
#include <string_view>

namespace vistrane {

/// A path, a name or an argument as people may see it in a message: one line of valid UTF-8 that
/// cannot steer a terminal. Each control character, and each byte that is no UTF-8, becomes U+FFFD.
/// Not for results, which are kept byte for byte.
std::string shownText(std::string_view text);

} // namespace vistrane
