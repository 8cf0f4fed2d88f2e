#include "tests/frontends/commandline/frame_files.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include <png.h>
#include <zlib.h>

#include "tests/frontends/commandline/CommandLineTest.h"

namespace vistrane {

namespace {

int colourType(FrameForm::Kind kind) {
    switch (kind) {
    case FrameForm::Kind::grey:
        return PNG_COLOR_TYPE_GRAY;
    case FrameForm::Kind::greyAlpha:
        return PNG_COLOR_TYPE_GRAY_ALPHA;
    case FrameForm::Kind::palette:
        return PNG_COLOR_TYPE_PALETTE;
    case FrameForm::Kind::rgb:
        return PNG_COLOR_TYPE_RGB;
    case FrameForm::Kind::rgba:
        return PNG_COLOR_TYPE_RGB_ALPHA;
    }
    return 0;
}

/// One row of 8 or 16 bits a component; packed to fewer by libpng.
std::vector<png_byte> rowOf(const FrameForm& form) {
    std::vector<int> pixel;
    if (form.kind == FrameForm::Kind::palette) {
        pixel = {1};
    } else if (form.kind == FrameForm::Kind::grey || form.kind == FrameForm::Kind::greyAlpha) {
        pixel = {form.bitDepth < 8 ? form.colour[0] >> (8 - form.bitDepth) : form.colour[0]};
    } else {
        pixel = {form.colour[0], form.colour[1], form.colour[2]};
    }
    if (form.kind == FrameForm::Kind::greyAlpha || form.kind == FrameForm::Kind::rgba) {
        pixel.push_back(form.alpha);
    }
    std::vector<png_byte> row;
    for (int x = 0; x < form.width; ++x) {
        for (const int component : pixel) {
            // 8 bits become 16 by doubling the byte.
            row.insert(row.end(), form.bitDepth == 16 ? 2 : 1, static_cast<png_byte>(component));
        }
    }
    return row;
}

void putNumber(std::string& bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<char>(number >> (24 - 8 * i));
    }
}

} // namespace

void writeFrame(const std::string& path, const FrameForm& form) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                               &std::fclose);
    ASSERT_TRUE(file) << path;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_set_compression_level(png, 1);
    png_set_IHDR(png, info, static_cast<png_uint_32>(form.width),
                 static_cast<png_uint_32>(form.height), form.bitDepth, colourType(form.kind),
                 form.isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (form.density > 0) {
        const auto perMetre = static_cast<png_uint_32>(std::lround(form.density / 0.0254));
        png_set_pHYs(png, info, perMetre, perMetre, PNG_RESOLUTION_METER);
    }
    const auto byte = [&](std::size_t i) { return static_cast<png_byte>(form.colour[i]); };
    const png_color palette[2] = {{0, 0, 0}, {byte(0), byte(1), byte(2)}};
    if (form.kind == FrameForm::Kind::palette) {
        png_set_PLTE(png, info, palette, 2);
    }
    png_write_info(png, info);
    png_set_packing(png);

    std::vector<std::vector<png_byte>> rows(static_cast<std::size_t>(form.height), rowOf(form));
    if (form.isNoise) {
        std::mt19937 random(static_cast<std::mt19937::result_type>(form.colour[0]));
        for (auto& row : rows) {
            for (png_byte& each : row) {
                each = static_cast<png_byte>(random());
            }
        }
    }
    std::vector<png_bytep> pointers;
    for (auto& row : rows) {
        pointers.push_back(row.data());
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
}

void writeGreyFrame(const std::string& path, int grey) {
    FrameForm form;
    form.colour = {grey, grey, grey};
    writeFrame(path, form);
}

namespace damaged {

std::string truncated(std::string png) {
    png.resize(png.size() * 2 / 3);
    return png;
}

std::string resized(std::string png, std::uint32_t width, std::uint32_t height) {
    const std::size_t type = png.find("IHDR");
    putNumber(png, type + 4, width);
    putNumber(png, type + 8, height);
    const auto* typeAndData = reinterpret_cast<const Bytef*>(png.data() + type);
    putNumber(png, type + 17, static_cast<std::uint32_t>(::crc32(0, typeAndData, 17)));
    return png;
}

} // namespace damaged

std::array<int, 3> ReadFrame::at(int x, int y) const {
    const std::size_t first = 3 * static_cast<std::size_t>(y * width + x);
    std::array<int, 3> colour{};
    for (std::size_t i = 0; i < 3; ++i) {
        colour[i] = static_cast<std::uint8_t>(rgb[first + i]);
    }
    return colour;
}

std::optional<ReadFrame> readFrame(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        return std::nullopt;
    }
    image.format = PNG_FORMAT_RGB;
    ReadFrame frame;
    frame.width = static_cast<int>(image.width);
    frame.height = static_cast<int>(image.height);
    frame.rgb.resize(PNG_IMAGE_SIZE(image));
    const bool isWhole = png_image_finish_read(&image, nullptr, frame.rgb.data(), 0, nullptr) != 0;
    png_image_free(&image);
    // libpng has warned, and read on, where a part was damaged.
    if (!isWhole || image.warning_or_error != 0) {
        return std::nullopt;
    }
    return frame;
}

} // namespace vistrane
