#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Immutable bytes. Any thread.
class NSData : public NSObject {
public:
    /// Valid as long as this object exists.
    virtual const std::uint8_t* bytes() const = 0;
    virtual std::size_t length() const = 0;

    /// Writes the bytes to the file at `path`, in place, replacing its content. The program always
    /// passes false for `atomically`; no back end implements true.
    ///
    /// Returns whether all bytes were written. Refuses a path that is not a regular file, without
    /// blocking.
    virtual bool writeToFile(const std::string& path, bool atomically) const = 0;
};

} // namespace vistrane
