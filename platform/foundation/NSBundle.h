#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The program's build information. Any thread.
class NSBundle : public NSObject {
public:
    /// "CFBundleShortVersionString" is the version without its last number, "CFBundleVersion" is
    /// that number. Nothing for any other key.
    virtual std::optional<std::string> objectForInfoDictionaryKey(const std::string& key) const = 0;
};

} // namespace vistrane
