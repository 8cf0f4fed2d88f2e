#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// What the program runs on. Any thread.
class NSProcessInfo : public NSObject {
public:
    /// The system's name and version for users; may hold any characters.
    virtual std::string operatingSystemVersionString() const = 0;
};

} // namespace vistrane
