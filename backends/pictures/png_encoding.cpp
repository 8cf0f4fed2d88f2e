#include "backends/pictures/png_encoding.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "backends/pictures/libpng_encoding.h"
#ifdef VISTRANE_HAS_IGZIP
#include "backends/pictures/igzip_encoding.h"
#endif

namespace vistrane {

namespace {

std::optional<ByteArray> encodeRows(const PictureShape& shape, const std::uint8_t* rows,
                                    std::size_t stride) {
#ifdef VISTRANE_HAS_IGZIP
    return encodeByIgzip(shape, rows, stride);
#else
    return encodeByLibpng(shape, rows, stride);
#endif
}

} // namespace

std::optional<ByteArray> encodePng(const PictureSource& picture) {
    const PictureShape& shape = picture.shape();
    const PixelForm form = shape.mayBeTransparent ? PixelForm::RGBA : PixelForm::RGB;
    const std::size_t stride = bytesPerPixel(form) * shape.width;
    if (const std::uint8_t* rows = picture.pixelsInMemory(form)) {
        return encodeRows(shape, rows, stride);
    }
    auto pixels = ByteArray::ofLength(stride * shape.height);
    if (!pixels || picture.readPixels(form, pixels->data(), static_cast<std::ptrdiff_t>(stride))) {
        return std::nullopt;
    }
    return encodeRows(shape, pixels->data(), stride);
}

std::shared_ptr<const ByteArray> pngFileOf(const PictureSource& picture) {
    if (auto file = picture.encodedAhead()) {
        return file;
    }
    auto file = encodePng(picture);
    return file ? std::make_shared<const ByteArray>(std::move(*file)) : nullptr;
}

} // namespace vistrane
