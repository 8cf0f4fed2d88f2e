#pragma once

#include <string>
#include <utility>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// Codes of "AVFoundationErrorDomain" that a movie writer reports. Errors of the operating system
/// are in "NSPOSIXErrorDomain", with the errno value as the code.
enum MovieErrorCode {
    AVErrorUnknown = -11800,
    AVErrorFileAlreadyExists = -11823,
    AVErrorEncoderNotFound = -11834,
    AVErrorOperationCancelled = -11878,
};

/// An error of the movie writer itself. Inline, because the encoder module needs it too.
inline NSError movieError(MovieErrorCode code, std::string text) {
    return {"AVFoundationErrorDomain", code, std::move(text)};
}

/// The movie at `path` was cancelled.
NSError cancelledError(const std::string& path);

/// There was not enough memory for `what`.
NSError memoryError(const std::string& what);

/// The operating system has refused `what` for the movie at `path`, with the errno value `number`.
/// The text ends with advice.
NSError systemError(int number, const std::string& what, const std::string& path);

} // namespace vistrane
