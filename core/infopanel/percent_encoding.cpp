#include "core/infopanel/percent_encoding.h"

namespace vistrane {

namespace {

constexpr std::string_view allowedSigns = "!$&'()*+,-.:;=[]_~";
constexpr char hexadecimalDigits[] = "0123456789ABCDEF";

} // namespace

bool isURLHostAllowed(char byte) {
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    const bool isDigit = byte >= '0' && byte <= '9';
    return isLetter || isDigit || allowedSigns.find(byte) != std::string_view::npos;
}

std::string addingPercentEncoding(std::string_view text) {
    std::string encoded;
    encoded.reserve(text.size());
    for (const char character : text) {
        if (isURLHostAllowed(character)) {
            encoded += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        encoded += '%';
        encoded += hexadecimalDigits[byte / 16];
        encoded += hexadecimalDigits[byte % 16];
    }
    return encoded;
}

} // namespace vistrane
