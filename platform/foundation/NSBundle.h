#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// What the program was built as. Any thread.
class NSBundle : public NSObject {
public:
    /// A text of the program's information: "CFBundleShortVersionString", the version without its
    /// last number, or "CFBundleVersion", that number. Nothing for a key that it does not have.
    virtual std::optional<std::string> objectForInfoDictionaryKey(const std::string& key) const = 0;
};

} // namespace vistrane
