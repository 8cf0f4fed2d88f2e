#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The per-user settings: a persistent map from keys to values. Main thread only.
class NSUserDefaults : public NSObject {
public:
    /// 0 for a key that is absent or holds neither a number nor a text; a text is read as
    /// `integerValue` reads it, its leading integer.
    virtual NSInteger integerForKey(const std::string& key) const = 0;
    virtual void setInteger(NSInteger value, const std::string& key) = 0;

    /// Nothing for a key that is absent or holds no text. Also answers the system's own keys, such
    /// as "AppleInterfaceStyle".
    virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

    /// Opaque bytes; nothing for a key that is absent or holds something else.
    virtual std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const = 0;
    virtual void setObject(const std::vector<std::uint8_t>& value, const std::string& key) = 0;

    /// Returns when every value set so far will survive a crash.
    virtual void synchronize() = 0;
};

} // namespace vistrane
