#pragma once

#include <string>
#include <string_view>

namespace vistrane {

/// Whether the byte stays as it is in the host of an address: letters and digits of ASCII and the
/// characters "!$&'()*+,-.:;=[]_~".
bool isURLHostAllowed(char byte);

/// Every other byte becomes "%" and its two hexadecimal digits, in capitals.
std::string addingPercentEncoding(std::string_view text);

} // namespace vistrane
