#include "platform/media/pictures/picture_errors.h"

#include <cstdint>
#include <system_error>
#include <utility>

namespace vistrane {

NSError pictureError(PictureFault fault, const std::string& name, const std::string& what) {
    return NSError{pictureErrorDomain, static_cast<std::int64_t>(fault),
                   "The picture " + onOneLine(name) + " " + what};
}

NSError systemError(int number, const std::string& what, const std::string& path,
                    const std::string& advice) {
    return NSError{"NSPOSIXErrorDomain", number,
                   what + " " + onOneLine(path) + ": " + std::generic_category().message(number) +
                       "; " + advice};
}

std::string onOneLine(std::string text) {
    for (char& character : text) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
            character = '?';
        }
    }
    return text;
}

} // namespace vistrane
