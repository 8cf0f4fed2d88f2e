#pragma once

#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// The domain of this folder's own errors.
inline constexpr char pictureErrorDomain[] = "VistranePictureErrorDomain";

enum class PictureFault {
    NotAPicture = 1,
    Damaged = 2,
    TooLarge = 3,
    NoMemory = 4,
    NotAFile = 5,
    CannotEncode = 6,
};

/// "the picture <name> <what>", one line. `name` is a path or says where the picture comes from.
NSError pictureError(PictureFault fault, const std::string& name, const std::string& what);

/// "<what> <path>: <reason of the system>; <advice>" with the system's number as the code.
NSError systemError(int number, const std::string& what, const std::string& path,
                    const std::string& advice);

} // namespace vistrane
