#include "platform/shown_text.h"

#include <cstddef>

namespace vistrane {

namespace {

/// The length in bytes of the UTF-8 character at the start of the text; 0 if it is invalid. Follows
/// RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isShortest = first != 0xE0 || byte(1) >= 0xA0;
        const bool isCharacter = first != 0xED || byte(1) <= 0x9F;
        return isShortest && isCharacter && follows(1) && follows(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isShortest = first != 0xF0 || byte(1) >= 0x90;
        const bool isInRange = first != 0xF4 || byte(1) <= 0x8F;
        return isShortest && isInRange && follows(1) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 2) {
        return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    }
    return character.size() == 1 && (first < 0x20 || first == 0x7F);
}

} // namespace

std::string shownText(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const std::string_view character = text.substr(0, length == 0 ? 1 : length);
        shown += length == 0 || isControl(character) ? replacement : character;
        text.remove_prefix(character.size());
    }
    return shown;
}

} // namespace vistrane
