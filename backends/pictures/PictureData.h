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

/// File data that carries its picture, so that a still reaches its PNG file without being written
/// to and parsed from another format in between. `Pictures` takes the picture out again.
///
/// Any other reader finds the bytes of a PNG file, whatever message returned the data. They are
/// encoded with the first call that needs them; the program makes no such call. Without the memory
/// to encode them there are no bytes.
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
    mutable ByteArray file_;
};

} // namespace vistrane
