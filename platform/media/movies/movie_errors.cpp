#include "platform/media/movies/movie_errors.h"

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace vistrane {

namespace {

/// Bytes of the UTF-8 character at `at`, or 0 when there is none. Follows RFC 3629: no overlong
/// forms, no surrogates, nothing above U+10FFFF.
std::size_t characterLength(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
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

const char* adviceFor(int number) {
    switch (number) {
    case ENOSPC:
    case EDQUOT:
        return "Free some space on that disk and compile again";
    case EFBIG:
        return "The file has reached the largest size allowed there: raise that limit, or use "
               "another disk";
    case EACCES:
    case EPERM:
    case EROFS:
        return "Choose a project folder that you may write to";
    case ENOENT:
    case ENOTDIR:
        return "Check that the project folder is still there and choose it again";
    case ENAMETOOLONG:
        return "Choose a project folder with a shorter path";
    case EMFILE:
    case ENFILE:
        return "Too many files are open: close some programs and compile again";
    default:
        return "Check that disk and compile again";
    }
}

} // namespace

std::string shownPath(const std::string& path) {
    std::string shown;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t length = characterLength(path, at);
        const auto first = static_cast<unsigned char>(path[at]);
        const bool isC1Control =
            length == 2 && first == 0xC2 && static_cast<unsigned char>(path[at + 1]) < 0xA0;
        if (length == 0 || first < 0x20 || first == 0x7F || isC1Control) {
            shown += "\xEF\xBF\xBD"; // U+FFFD, the replacement character
            at += length == 0 ? 1 : length;
        } else {
            shown.append(path, at, length);
            at += length;
        }
    }
    return shown;
}

NSError movieError(MovieErrorCode code, std::string text) {
    return {"AVFoundationErrorDomain", code, std::move(text)};
}

NSError systemError(int number, const std::string& what, const std::string& path) {
    return {"NSPOSIXErrorDomain", number,
            what + " (" + shownPath(path) + "): " + std::generic_category().message(number) + ". " +
                adviceFor(number)};
}

} // namespace vistrane
