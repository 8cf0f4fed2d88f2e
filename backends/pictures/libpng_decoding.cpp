#include "backends/pictures/libpng_decoding.h"

#include <png.h>

#include <csetjmp>
#include <cstring>

namespace vistrane {

namespace {

/// Everything that the library's callbacks use. Plain data only: errors leave by a long jump, which
/// skips destructors.
struct Decoding {
    const std::uint8_t* file = nullptr;
    std::size_t length = 0;
    std::size_t position = 0;
    bool inPixels = false;
    char fault[160] = {};
};

void recordFault(Decoding& decoding, const char* message) {
    std::strncpy(decoding.fault, message, sizeof decoding.fault - 1);
}

[[noreturn]] void onError(png_structp png, png_const_charp message) {
    recordFault(*static_cast<Decoding*>(png_get_error_ptr(png)), message);
    png_longjmp(png, 1);
}

/// Data after the last pixel are harmless. Any other warning while pixels are read means that they
/// are wrong; usually the checksum of the compressed data is.
void onWarning(png_structp png, png_const_charp message) {
    Decoding& decoding = *static_cast<Decoding*>(png_get_error_ptr(png));
    const bool harmless = std::strstr(message, "Too much image data") != nullptr ||
                          std::strstr(message, "Extra compressed data") != nullptr;
    if (decoding.inPixels && !harmless) {
        png_error(png, message);
    }
}

void onRead(png_structp png, png_bytep bytes, std::size_t length) {
    Decoding& decoding = *static_cast<Decoding*>(png_get_io_ptr(png));
    if (length > decoding.length - decoding.position) {
        png_error(png, "the file ends too early");
    }
    std::memcpy(bytes, decoding.file + decoding.position, length);
    decoding.position += length;
}

/// Skips all chunks but size, palette, transparency and pixels. With others, a hostile file could
/// make libpng use any amount of time and memory.
void skipOtherChunks(png_structp png) {
    static const png_byte names[] = "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0pHYs\0"
                                    "sBIT\0sCAL\0sPLT\0sRGB\0tEXt\0tIME\0zTXt";
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, names, sizeof names / 5);
}

void setUp(png_structp png, const PngHeader& header) {
    skipOtherChunks(png);
    png_set_user_limits(png, header.width, header.height);
    // `readPngHeader` has refused wrong checksums of critical chunks, and skipped ancillary chunks
    // with such.
    png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_WARN_DISCARD);
}

void requestForm(png_structp png, png_infop info, PixelForm form) {
    const bool hasAlpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                          png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    if (form == PixelForm::RGB) {
        png_set_strip_alpha(png);
    } else if (!hasAlpha) {
        png_set_filler(png, 0xFF, form == PixelForm::ARGB ? PNG_FILLER_BEFORE : PNG_FILLER_AFTER);
    } else if (form == PixelForm::ARGB) {
        png_set_swap_alpha(png);
    }
}

/// An interlaced picture has several passes; each fills in some pixels of the rows.
void readRows(png_structp png, const PngHeader& header, std::uint8_t* rows, std::ptrdiff_t stride,
              int passes) {
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t y = 0; y < header.height; ++y) {
            png_read_row(png, rows + static_cast<std::ptrdiff_t>(y) * stride, nullptr);
        }
    }
}

bool decode(png_structp png, png_infop info, Decoding& decoding, const PngHeader& header,
            PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    setUp(png, header);
    png_set_read_fn(png, &decoding, onRead);
    png_read_info(png, info);
    requestForm(png, info, form);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_image_width(png, info) != header.width ||
        png_get_image_height(png, info) != header.height ||
        png_get_rowbytes(png, info) != header.width * bytesPerPixel(form)) {
        png_error(png, "its pixel format differs from its header");
    }
    decoding.inPixels = true;
    readRows(png, header, rows, stride, passes);
    return true;
}

} // namespace

std::optional<std::string> decodeByLibpng(std::span<const std::uint8_t> file,
                                          const PngHeader& header, PixelForm form,
                                          std::uint8_t* rows, std::ptrdiff_t stride) {
    Decoding decoding;
    decoding.file = file.data();
    decoding.length = file.size();
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &decoding, onError, onWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info == nullptr) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        return "there is not enough memory";
    }
    const bool whole = decode(png, info, decoding, header, form, rows, stride);
    png_destroy_read_struct(&png, &info, nullptr);
    return whole ? std::nullopt : std::optional<std::string>(decoding.fault);
}

} // namespace vistrane
