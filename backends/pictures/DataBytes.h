#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureObserver.h"
#include "platform/foundation/NSData.h"

namespace vistrane {

/// Bytes in memory as `NSData`. Immutable; any thread.
class DataBytes final : public NSData {
public:
    /// Each `writeToFile` reports its outcome to `observer`, if there is one, on the calling
    /// thread, before it returns. The observer outlives this object.
    explicit DataBytes(ByteArray bytes, PictureObserver* observer = nullptr);
    /// `bytes` is not null.
    DataBytes(std::shared_ptr<const ByteArray> bytes, PictureObserver* observer);

    /// Null if there is not enough memory for the copy.
    static std::shared_ptr<DataBytes> copyOf(std::span<const std::uint8_t> bytes,
                                             PictureObserver* observer = nullptr);

    const std::uint8_t* bytes() const override;
    std::size_t length() const override;

    /// See `writeFileInPlace`.
    bool writeToFile(const std::string& path, bool atomically) const override;

private:
    std::shared_ptr<const ByteArray> bytes_;
    PictureObserver* observer_;
};

} // namespace vistrane
