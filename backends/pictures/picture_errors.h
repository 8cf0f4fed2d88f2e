#pragma once

#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// The error domain of this folder.
inline constexpr char pictureErrorDomain[] = "VistranePictureErrorDomain";

enum class PictureFault {
    NotAPicture = 1,
    Damaged = 2,
    TooLarge = 3,
    NoMemory = 4,
    NotAFile = 5,
    CannotEncode = 6,
};

/// "The picture <name> <what>", one line. `name` is a path or a description.
NSError pictureError(PictureFault fault, const std::string& name, const std::string& what);

/// There is not enough memory for the picture.
NSError outOfMemory(const std::string& name);

/// "<what> <path>: <the system's reason>; <advice>", with the system's error number as the code.
NSError systemError(int number, const std::string& what, const std::string& path,
                    const std::string& advice);

} // namespace vistrane
