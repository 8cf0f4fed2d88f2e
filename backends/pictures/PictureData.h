#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"
#include "platform/foundation/NSData.h"

namespace vistrane {

/// File data that carries its decoded picture, so that a still becomes a PNG file without an
/// intermediate format. `Pictures` takes the picture out again.
///
/// `bytes` is a PNG file, whichever call returned the data. It is encoded by the first call that
/// needs it, if it was not made ahead; the program makes no such call. Empty if there is not enough
/// memory to encode it.
class PictureData final : public NSData {
public:
    explicit PictureData(std::shared_ptr<const PictureSource> picture);

    const std::shared_ptr<const PictureSource>& picture() const { return picture_; }

    const std::uint8_t* bytes() const override;
    std::size_t length() const override;
    bool writeToFile(const std::string& path, bool atomically) const override;

private:
    const ByteArray& file() const;

    const std::shared_ptr<const PictureSource> picture_;
    mutable std::once_flag isEncoded_;
    mutable std::shared_ptr<const ByteArray> file_;
};

} // namespace vistrane
