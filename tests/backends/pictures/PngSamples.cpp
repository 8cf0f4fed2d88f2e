#include "tests/backends/pictures/PngSamples.h"

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <numeric>

namespace vistrane::testing {

namespace {

constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

std::uint32_t get32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes[offset]) << 24 |
           static_cast<std::uint32_t>(bytes[offset + 1]) << 16 |
           static_cast<std::uint32_t>(bytes[offset + 2]) << 8 | bytes[offset + 3];
}

void appendBytes(png_structp png, png_bytep bytes, std::size_t length) {
    append(*static_cast<Bytes*>(png_get_io_ptr(png)), {bytes, length});
}

void flushNothing(png_structp) {}

/// The values of one picture, as they go into the file.
struct Values {
    PngForm form;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint16_t> values;
    std::vector<png_color> palette;
    Bytes paletteAlpha;
    png_color_16 key{};
};

/// A byte for each value, or two for those of 16 bits; libpng packs the smaller ones.
Bytes rowOf(const Values& picture, std::uint32_t y) {
    const std::size_t perRow = picture.form.components() * picture.width;
    Bytes row;
    for (std::size_t i = y * perRow; i < (y + 1) * perRow; ++i) {
        if (picture.form.depth == 16) {
            row.push_back(static_cast<std::uint8_t>(picture.values[i] >> 8));
        }
        row.push_back(static_cast<std::uint8_t>(picture.values[i]));
    }
    return row;
}

Bytes written(const Values& picture) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, appendBytes, flushNothing);
    png_set_IHDR(png, info, picture.width, picture.height, picture.form.depth, picture.form.colour,
                 picture.form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
    if (picture.form.colour == 3) {
        png_set_PLTE(png, info, picture.palette.data(), static_cast<int>(picture.palette.size()));
    }
    if (picture.form.transparency) {
        png_set_tRNS(png, info,
                     picture.paletteAlpha.empty() ? nullptr : picture.paletteAlpha.data(),
                     static_cast<int>(picture.paletteAlpha.size()), &picture.key);
    }
    png_write_info(png, info);
    png_set_packing(png);
    std::vector<Bytes> rows;
    std::vector<png_bytep> pointers;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        rows.push_back(rowOf(picture, y));
    }
    for (Bytes& row : rows) {
        pointers.push_back(row.data());
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

std::uint8_t toEightBits(unsigned value, int depth) {
    if (depth == 16) {
        return static_cast<std::uint8_t>((value * 255 + 32767) / 65535);
    }
    return static_cast<std::uint8_t>(value * 255 / ((1U << depth) - 1));
}

void addPixel(const Values& picture, const std::uint16_t* value, Bytes& rgba) {
    const PngForm& form = picture.form;
    if (form.colour == 3) {
        const png_color& colour = picture.palette[value[0]];
        const bool listed = value[0] < picture.paletteAlpha.size();
        rgba.insert(rgba.end(), {colour.red, colour.green, colour.blue,
                                 listed ? picture.paletteAlpha[value[0]] : std::uint8_t{255}});
        return;
    }
    const bool isGrey = form.components() < 3;
    const bool isKey = value[0] == picture.key.red &&
                       (isGrey || (value[1] == picture.key.green && value[2] == picture.key.blue));
    for (const int i : {0, isGrey ? 0 : 1, isGrey ? 0 : 2}) {
        rgba.push_back(toEightBits(value[i], form.depth));
    }
    const bool hasAlpha = form.components() % 2 == 0;
    rgba.push_back(hasAlpha ? toEightBits(value[form.components() - 1], form.depth)
                            : std::uint8_t(form.transparency && isKey ? 0 : 255));
}

PngSample sampleOf(const Values& picture) {
    PngSample sample{picture.width, picture.height, written(picture), {}};
    for (std::size_t i = 0; i < std::size_t{picture.width} * picture.height; ++i) {
        addPixel(picture, &picture.values[i * picture.form.components()], sample.rgba);
    }
    return sample;
}

void failReading(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void noteWarning(png_structp png, png_const_charp) {
    static_cast<PngSample*>(png_get_error_ptr(png))->warned = true;
}

void takeBytes(png_structp png, png_bytep bytes, std::size_t length) {
    auto* file = static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(png));
    if (length > file->size()) {
        png_error(png, "end");
    }
    std::memcpy(bytes, file->data(), length);
    *file = file->subspan(length);
}

/// Errors jump out of it: it must have no destructors.
bool readAll(png_structp png, png_infop info, std::span<const std::uint8_t>* file,
             PngSample* sample) {
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_set_read_fn(png, file, takeBytes);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    sample->width = png_get_image_width(png, info);
    sample->height = png_get_image_height(png, info);
    if (sample->width > 4096 || sample->height > 4096) {
        return false;
    }
    sample->rgba.assign(std::size_t{4} * sample->width * sample->height, 0);
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t y = 0; y < sample->height; ++y) {
            png_read_row(png, sample->rgba.data() + std::size_t{4} * sample->width * y, nullptr);
        }
    }
    png_read_end(png, nullptr);
    return true;
}

} // namespace

std::size_t PngForm::components() const {
    constexpr std::size_t counts[] = {1, 0, 3, 1, 2, 0, 4};
    return counts[colour];
}

std::size_t PngForm::rowBytes(std::uint32_t width) const {
    return 1 + (components() * static_cast<std::size_t>(depth) * width + 7) / 8;
}

std::string PngForm::text() const {
    return "colour " + std::to_string(colour) + ", depth " + std::to_string(depth) +
           (interlaced ? ", interlaced" : "") + (transparency ? ", tRNS" : "");
}

std::vector<PngForm> allPngForms() {
    std::vector<PngForm> forms;
    for (const int colour : {0, 2, 3, 4, 6}) {
        for (const int depth : {1, 2, 4, 8, 16}) {
            const bool fewBits = colour == 0 || colour == 3;
            if ((depth < 8 && !fewBits) || (depth == 16 && colour == 3)) {
                continue;
            }
            for (const bool interlaced : {false, true}) {
                forms.push_back({colour, depth, interlaced, false});
                if (colour < 4) {
                    forms.push_back({colour, depth, interlaced, true});
                }
            }
        }
    }
    return forms;
}

PngSample randomPng(const PngForm& form, std::uint32_t width, std::uint32_t height, unsigned seed) {
    std::mt19937 random(seed);
    Values picture{form, width, height, {}, {}, {}, {}};
    const auto value = [&](unsigned below) { return static_cast<std::uint16_t>(random() % below); };
    const unsigned steps = 1U << form.depth;
    const std::size_t count = form.components() * width * height;
    for (std::size_t i = 0; i < count; ++i) {
        picture.values.push_back(value(steps));
    }
    if (form.colour == 3) {
        for (unsigned i = 0; i < steps; ++i) {
            picture.palette.push_back({static_cast<std::uint8_t>(value(256)),
                                       static_cast<std::uint8_t>(value(256)),
                                       static_cast<std::uint8_t>(value(256))});
        }
    }
    if (form.transparency && form.colour == 3) {
        for (unsigned i = 0; i < (steps + 1) / 2; ++i) {
            picture.paletteAlpha.push_back(static_cast<std::uint8_t>(value(256)));
        }
    } else if (form.transparency) {
        // The first pixel's own value is the transparent one.
        picture.key.gray = picture.key.red = picture.values[0];
        picture.key.green = picture.values[count > 2 ? 1 : 0];
        picture.key.blue = picture.values[count > 2 ? 2 : 0];
    }
    return sampleOf(picture);
}

PngSample pngOf(std::uint32_t width, std::uint32_t height,
                const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& rgba) {
    Bytes pixels;
    bool opaque = true;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            appendNumber(pixels, rgba(x, y));
            opaque = opaque && pixels.back() == 255;
        }
    }
    Values picture{{opaque ? 2 : 6, 8, false, false}, width, height, {}, {}, {}, {}};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (!opaque || i % 4 != 3) {
            picture.values.push_back(pixels[i]);
        }
    }
    return sampleOf(picture);
}

std::uint32_t below(std::mt19937& random, std::size_t limit) {
    return limit > 0 ? static_cast<std::uint32_t>(random() % limit) : 0;
}

Bytes randomBytes(std::mt19937& random, std::size_t length) {
    Bytes bytes(length);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendNumber(Bytes& bytes, std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

Bytes chunk(const std::string& type, std::span<const std::uint8_t> data) {
    Bytes bytes;
    appendNumber(bytes, static_cast<std::uint32_t>(data.size()));
    bytes.insert(bytes.end(), type.begin(), type.end());
    append(bytes, data);
    const auto checked = static_cast<uInt>(bytes.size() - 4);
    appendNumber(bytes, static_cast<std::uint32_t>(::crc32(0, bytes.data() + 4, checked)));
    return bytes;
}

std::vector<ChunkPlace> chunksOf(std::span<const std::uint8_t> file) {
    std::vector<ChunkPlace> chunks;
    std::size_t offset = signature.size();
    while (offset + 12 <= file.size()) {
        const std::size_t length = get32(file, offset);
        if (length > file.size() - offset - 12) {
            break;
        }
        const auto* type = reinterpret_cast<const char*>(file.data()) + offset + 4;
        chunks.push_back({std::string(type, 4), offset, length});
        offset += 12 + length;
    }
    return chunks;
}

Bytes pngAround(const PngForm& form, std::uint32_t width, std::uint32_t height,
                std::span<const Bytes> imageData) {
    Bytes header;
    appendNumber(header, width);
    appendNumber(header, height);
    append(header, Bytes{std::uint8_t(form.depth), std::uint8_t(form.colour), 0, 0, 0});
    Bytes file(signature.begin(), signature.end());
    append(file, chunk("IHDR", header));
    if (form.colour == 3) {
        Bytes palette(std::size_t{3} << form.depth);
        std::iota(palette.begin(), palette.end(), std::uint8_t{7});
        append(file, chunk("PLTE", palette));
    }
    for (const Bytes& data : imageData) {
        append(file, chunk("IDAT", data));
    }
    append(file, chunk("IEND", {}));
    return file;
}

Bytes withChunkBefore(const Bytes& file, const std::string& type, const Bytes& added) {
    Bytes result = file;
    for (const ChunkPlace& place : chunksOf(file)) {
        if (place.type == type) {
            result.insert(result.begin() + static_cast<std::ptrdiff_t>(place.offset), added.begin(),
                          added.end());
            break;
        }
    }
    return result;
}

Bytes withDensity(const Bytes& file, std::uint32_t x, std::uint32_t y, std::uint8_t unit) {
    Bytes data;
    appendNumber(data, x);
    appendNumber(data, y);
    data.push_back(unit);
    return withChunkBefore(file, "IDAT", chunk("pHYs", data));
}

Bytes withSplitData(const Bytes& file, std::size_t length) {
    Bytes result(file.begin(), file.begin() + signature.size());
    for (const ChunkPlace& place : chunksOf(file)) {
        const auto data = std::span(file).subspan(place.offset + 8, place.dataLength);
        if (place.type != "IDAT") {
            append(result, chunk(place.type, data));
            continue;
        }
        append(result, chunk("IDAT", {}));
        for (std::size_t i = 0; i < data.size(); i += length) {
            append(result, chunk("IDAT", data.subspan(i, std::min(length, data.size() - i))));
        }
    }
    return result;
}

Bytes withDamagedPixels(Bytes file, std::size_t fromEnd) {
    for (const ChunkPlace& place : chunksOf(file)) {
        if (place.type == "IDAT") {
            file[place.offset + 8 + place.dataLength - fromEnd] ^= 0xFF;
        }
    }
    return withRightChecksums(file);
}

Bytes withRightChecksums(Bytes file) {
    for (const ChunkPlace& place : chunksOf(file)) {
        const auto data = std::span(file).subspan(place.offset + 8, place.dataLength);
        const Bytes right = chunk(place.type, data);
        std::copy(right.begin(), right.end(),
                  file.begin() + static_cast<std::ptrdiff_t>(place.offset));
    }
    return file;
}

std::optional<PngSample> readByLibpng(std::span<const std::uint8_t> file) {
    PngSample sample;
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, &sample, failReading, noteWarning);
    png_infop info = png_create_info_struct(png);
    const bool whole = readAll(png, info, &file, &sample);
    png_destroy_read_struct(&png, &info, nullptr);
    return whole ? std::optional(sample) : std::nullopt;
}

} // namespace vistrane::testing
