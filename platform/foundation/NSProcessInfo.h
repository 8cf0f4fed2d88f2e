#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The system that the program runs on. Any thread.
class NSProcessInfo : public NSObject {
public:
    /// The system's name and version, for users. May contain any characters.
    virtual std::string operatingSystemVersionString() const = 0;
};

} // namespace vistrane
