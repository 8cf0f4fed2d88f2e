#include "backends/pictures/PictureSource.h"

#include <cmath>
#include <new>
#include <span>
#include <utility>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/Downscaling.h"
#include "backends/pictures/ProfileConversion.h"
#include "backends/pictures/picture_errors.h"
#include "backends/pictures/png_decoding.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

namespace {

constexpr double metresPerInch = 0.0254;
constexpr double pointsPerInch = 72.0;

NSError damaged(const std::string& name, const std::string& how) {
    return pictureError(PictureFault::Damaged, name,
                        "is damaged (" + how + "); make or copy it again, or remove it");
}

/// Decodes a picture without keeping it.
class NoRows final : public PictureRows {
public:
    void begin() override {}
    void take(const std::uint8_t*) override {}
};

class PngPicture final : public PictureSource {
public:
    PngPicture(PictureShape shape, std::string name, std::shared_ptr<const NSData> file,
               const PngHeader& header)
        : PictureSource(shape, std::move(name), header.flaw), file_(std::move(file)),
          header_(header) {}

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override {
        const std::span<const std::uint8_t> bytes(file_->bytes(), file_->length());
        if (const auto fault = decodePng(bytes, header_, form, rows, stride)) {
            return damaged(name(), *fault);
        }
        if (header_.profile) {
            convertToSrgb(bytes.subspan(header_.profile->offset, header_.profile->length), form,
                          rows, stride);
        }
        return std::nullopt;
    }

    std::optional<NSError> passRows(PixelForm form, PictureRows& rows) const override {
        const std::span<const std::uint8_t> bytes(file_->bytes(), file_->length());
        if (!header_.profile && passUsualPng(bytes, header_, form, rows)) {
            return std::nullopt;
        }
        return PictureSource::passRows(form, rows);
    }

private:
    void convertToSrgb(std::span<const std::uint8_t> profile, PixelForm form, std::uint8_t* rows,
                       std::ptrdiff_t stride) const {
        const auto conversion = ProfileConversion::fromChunk(profile, header_.isGrey(), form);
        for (std::uint32_t y = 0; conversion && y < header_.height; ++y) {
            conversion->convert(rows + static_cast<std::ptrdiff_t>(y) * stride, header_.width);
        }
    }

    std::shared_ptr<const NSData> file_;
    PngHeader header_;
};

PictureShape shapeOf(const PngHeader& header) {
    PictureShape shape{header.width, header.height, header.density, header.hasAlpha()};
    if (shape.density && !densityMakesSense(*shape.density, shape.width, shape.height)) {
        shape.density.reset();
    }
    return shape;
}

} // namespace

NSSize PictureShape::sizeInPoints() const {
    if (!density) {
        return {static_cast<double>(width), static_cast<double>(height)};
    }
    return {width * pointsPerInch / dotsPerInch(density->x),
            height * pointsPerInch / dotsPerInch(density->y)};
}

std::optional<NSError> PictureSource::passRows(PixelForm form, PictureRows& rows) const {
    const std::size_t stride = bytesPerPixel(form) * shape_.width;
    const std::uint8_t* pixels = pixelsInMemory(form);
    std::optional<ByteArray> decoded;
    if (pixels == nullptr) {
        decoded = ByteArray::ofLength(stride * shape_.height);
        if (!decoded) {
            return outOfMemory(name_);
        }
        if (auto error = readPixels(form, decoded->data(), static_cast<std::ptrdiff_t>(stride))) {
            return error;
        }
        pixels = decoded->data();
    }
    rows.begin();
    for (std::size_t y = 0; y < shape_.height; ++y) {
        rows.take(pixels + y * stride);
    }
    return std::nullopt;
}

std::optional<NSError> PictureSource::readSmaller(std::size_t width, std::size_t height,
                                                  std::uint32_t* pixels,
                                                  std::ptrdiff_t stride) const {
    try {
        Downscaling smaller(shape_, PixelForm::RGB, width, height, pixels, stride);
        return passRows(PixelForm::RGB, smaller);
    } catch (const std::bad_alloc&) {
        return outOfMemory(name_);
    }
}

double dotsPerInch(std::uint32_t pixelsPerMetre) {
    const double exact = pixelsPerMetre * metresPerInch;
    const double whole = std::round(exact);
    const bool isRounded = whole >= 1.0 && std::abs(whole / metresPerInch - pixelsPerMetre) < 1.0;
    return isRounded ? whole : exact;
}

bool densityMakesSense(PixelDensity density, std::uint32_t width, std::uint32_t height) {
    if (density.x == 0 || density.y == 0) {
        return false;
    }
    const NSSize size = PictureShape{width, height, density, false}.sizeInPoints();
    const double largest = PictureLimits().largestSide;
    return size.width >= 1.0 && size.width <= largest && size.height >= 1.0 &&
           size.height <= largest;
}

PictureSourceResult pictureFromPng(ByteArray file, std::string name, const PictureLimits& limits) {
    return pictureFromPng(std::make_shared<DataBytes>(std::move(file)), std::move(name), limits);
}

PictureSourceResult pictureFromPng(std::shared_ptr<const NSData> file, std::string name,
                                   const PictureLimits& limits) {
    const auto read = readPngHeader({file->bytes(), file->length()}, limits);
    if (const auto* refusal = std::get_if<PngRefusal>(&read)) {
        return pictureError(refusal->fault, name, refusal->what);
    }
    const PngHeader& header = std::get<PngHeader>(read);
    auto picture = std::make_shared<const PngPicture>(shapeOf(header), std::move(name),
                                                      std::move(file), header);
    NoRows rows;
    if (!header.flaw.empty() && picture->passRows(picture->shape().compactForm(), rows)) {
        return damaged(picture->name(), header.flaw);
    }
    return picture;
}

} // namespace vistrane
