#include "backends/pictures/libpng_encoding.h"

#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <utility>

namespace vistrane {

namespace {

[[noreturn]] void onError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void onWrite(png_structp png, png_bytep bytes, std::size_t length) {
    auto* file = static_cast<ByteArray*>(png_get_io_ptr(png));
    if (!file->append({bytes, length})) {
        png_error(png, "not enough memory");
    }
}

void onFlush(png_structp) {}

void setUp(png_structp png, png_infop info, const PictureShape& shape) {
    png_set_user_limits(png, shape.width, shape.height);
    png_set_IHDR(png, info, shape.width, shape.height, 8,
                 shape.mayBeTransparent ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    png_set_compression_level(png, 1);
    png_set_compression_buffer_size(png, std::size_t{1} << 18);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    if (shape.density) {
        png_set_pHYs(png, info, shape.density->x, shape.density->y, PNG_RESOLUTION_METER);
    }
}

bool encode(png_structp png, png_infop info, const PictureShape& shape, const std::uint8_t* rows,
            std::size_t stride, ByteArray& file) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_set_write_fn(png, &file, onWrite, onFlush);
    setUp(png, info, shape);
    png_write_info(png, info);
    for (std::uint32_t y = 0; y < shape.height; ++y) {
        png_write_row(png, rows + y * stride);
    }
    png_write_end(png, info);
    return true;
}

} // namespace

std::optional<ByteArray> encodeByLibpng(const PictureShape& shape, const std::uint8_t* rows,
                                        std::size_t stride) {
    ByteArray file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    const bool whole = info != nullptr && encode(png, info, shape, rows, stride, file);
    png_destroy_write_struct(&png, &info);
    return whole ? std::optional(std::move(file)) : std::nullopt;
}

} // namespace vistrane
