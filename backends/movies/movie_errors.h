#pragma once

#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// Codes of "AVFoundationErrorDomain" that a movie writer reports. What the system itself refuses
/// comes in "NSPOSIXErrorDomain" with its error number.
enum MovieErrorCode {
    AVErrorUnknown = -11800,
    AVErrorFileAlreadyExists = -11823,
    AVErrorEncoderNotFound = -11834,
    AVErrorOperationCancelled = -11878,
};

/// The movie writer's own refusals.
NSError movieError(MovieErrorCode code, std::string text);

/// `what` was tried with the movie at `path` and the system answered with `number`, an errno
/// value. The text ends with what to do about it.
NSError systemError(int number, const std::string& what, const std::string& path);

} // namespace vistrane
