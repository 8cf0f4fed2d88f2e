#include "backends/pictures/picture_errors.h"

#include <cstdint>
#include <system_error>

#include "platform/shown_text.h"

namespace vistrane {

NSError pictureError(PictureFault fault, const std::string& name, const std::string& what) {
    return NSError{pictureErrorDomain, static_cast<std::int64_t>(fault),
                   "The picture " + shownText(name) + " " + what};
}

NSError outOfMemory(const std::string& name) {
    return pictureError(PictureFault::NoMemory, name,
                        "needs more memory than is available; close other programs");
}

NSError systemError(int number, const std::string& what, const std::string& path,
                    const std::string& advice) {
    return NSError{"NSPOSIXErrorDomain", number,
                   what + " " + shownText(path) + ": " + std::generic_category().message(number) +
                       "; " + advice};
}

} // namespace vistrane
