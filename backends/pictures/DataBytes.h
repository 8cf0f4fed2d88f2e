#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "backends/pictures/ByteArray.h"
#include "backends/posix/MediaObserver.h"
#include "platform/foundation/NSData.h"

namespace vistrane {

/// Bytes in memory as `NSData`. Immutable; any thread.
class DataBytes final : public NSData {
public:
    /// With an `observer` every `writeToFile` reports its outcome to it, on the writing thread and
    /// before it returns. The observer outlives the object.
    explicit DataBytes(ByteArray bytes, MediaObserver* observer = nullptr);

    /// Null when there is no memory for the copy.
    static std::shared_ptr<DataBytes> copyOf(std::span<const std::uint8_t> bytes,
                                             MediaObserver* observer = nullptr);

    const std::uint8_t* bytes() const override;
    std::size_t length() const override;

    /// See `writeFileInPlace` and `replaceFile`.
    bool writeToFile(const std::string& path, bool atomically) const override;

private:
    ByteArray bytes_;
    MediaObserver* observer_;
};

} // namespace vistrane
