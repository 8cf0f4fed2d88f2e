#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// A picture whose pixels are in memory.
class DecodedPicture final : public PictureSource {
public:
    /// `pixels` are sRGB values in the shape's `compactForm`: contiguous rows, the top row first.
    DecodedPicture(PictureShape shape, std::string name, ByteArray pixels);

    /// Makes `encodedAhead`, so that the thread that saves the picture does not have to encode it.
    /// Without enough memory there is none. Before the object is shared with other threads.
    void encodeAhead();

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override;
    const std::uint8_t* pixelsInMemory(PixelForm form) const override;
    std::shared_ptr<const ByteArray> encodedAhead() const override { return file_; }

private:
    ByteArray pixels_;
    std::shared_ptr<const ByteArray> file_;
};

/// Decodes `picture` into memory. Returns `picture` itself if its pixels are already in memory.
PictureSourceResult decodedPicture(std::shared_ptr<const PictureSource> picture);

} // namespace vistrane
