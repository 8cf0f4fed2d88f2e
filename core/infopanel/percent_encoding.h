#pragma once

#include <string>
#include <string_view>

namespace vistrane {

/// Whether the byte needs no encoding in the host of an address: ASCII letters and digits and the
/// characters "!$&'()*+,-.:;=[]_~".
bool isURLHostAllowed(char byte);

/// Replaces every other byte by "%" and two upper-case hexadecimal digits.
std::string addingPercentEncoding(std::string_view text);

} // namespace vistrane
