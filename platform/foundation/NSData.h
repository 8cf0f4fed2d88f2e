#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Immutable bytes. Any thread.
class NSData : public NSObject {
public:
    /// Valid as long as the object.
    virtual const std::uint8_t* bytes() const = 0;
    virtual std::size_t length() const = 0;

    /// Writes the bytes to the file of that path, replacing what it holds. With `atomically` a
    /// reader sees the old file or the whole new one; without, the file is written in place.
    /// Returns whether every byte was written. Never blocks on a path that is no regular file.
    virtual bool writeToFile(const std::string& path, bool atomically) const = 0;
};

} // namespace vistrane
