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
    /// 0 if the key is absent or holds neither a number nor a text. A text is converted by
    /// `integerValue`.
    virtual NSInteger integerForKey(const std::string& key) const = 0;
    virtual void setInteger(NSInteger value, const std::string& key) = 0;

    /// Nothing if the key is absent or holds no text. The system's own keys, such as
    /// "AppleInterfaceStyle", can be read too.
    virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;

    /// Opaque bytes. Nothing if the key is absent or holds something else.
    virtual std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const = 0;
    virtual void setObject(const std::vector<std::uint8_t>& value, const std::string& key) = 0;

    /// Returns when all values set so far are on the disk.
    virtual void synchronize() = 0;
};

} // namespace vistrane
