#include "backends/pictures/DecodedPicture.h"

#include <cassert>
#include <cstring>
#include <new>
#include <utility>

#include "backends/pictures/picture_errors.h"
#include "backends/pictures/png_encoding.h"
#include "backends/pictures/png_expansion.h"

namespace vistrane {

namespace {

std::size_t redOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 1 : 0;
}

std::size_t alphaOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 0 : 3;
}

void convertRow(const std::uint8_t* from, PixelForm fromForm, std::uint8_t* to, PixelForm toForm,
                std::size_t count) {
    const std::size_t fromStep = bytesPerPixel(fromForm);
    const std::size_t toStep = bytesPerPixel(toForm);
    const std::uint8_t* fromColour = from + redOffset(fromForm);
    std::uint8_t* toColour = to + redOffset(toForm);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(toColour + i * toStep, fromColour + i * fromStep, 3);
    }
    if (toForm == PixelForm::RGB) {
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        to[i * toStep + alphaOffset(toForm)] =
            fromForm == PixelForm::RGB ? 0xFF : from[i * fromStep + alphaOffset(fromForm)];
    }
}

} // namespace

DecodedPicture::DecodedPicture(PictureShape shape, std::string name, ByteArray pixels)
    : PictureSource(shape, std::move(name)), pixels_(std::move(pixels)) {
    assert(pixels_.length() ==
           bytesPerPixel(shape.compactForm()) * std::size_t{shape.width} * shape.height);
}

void DecodedPicture::encodeAhead() {
    try {
        file_ = pngFileOf(*this);
    } catch (const std::bad_alloc&) {
        file_.reset();
    }
}

std::optional<NSError> DecodedPicture::readPixels(PixelForm form, std::uint8_t* rows,
                                                  std::ptrdiff_t stride) const {
    const PixelForm ownForm = shape().compactForm();
    const std::size_t ownStride = bytesPerPixel(ownForm) * shape().width;
    for (std::size_t y = 0; y < shape().height; ++y) {
        const std::uint8_t* from = pixels_.data() + y * ownStride;
        std::uint8_t* to = rows + static_cast<std::ptrdiff_t>(y) * stride;
        if (form == ownForm) {
            std::memcpy(to, from, ownStride);
        } else if (ownForm == PixelForm::RGB && y + 1 < shape().height) {
            // Reads a little past the end of the row.
            addAlpha(from, form, to, shape().width);
        } else {
            convertRow(from, ownForm, to, form, shape().width);
        }
    }
    return std::nullopt;
}

const std::uint8_t* DecodedPicture::pixelsInMemory(PixelForm form) const {
    return form == shape().compactForm() ? pixels_.data() : nullptr;
}

PictureSourceResult decodedPicture(std::shared_ptr<const PictureSource> picture) {
    const PictureShape& shape = picture->shape();
    const PixelForm form = shape.compactForm();
    if (picture->pixelsInMemory(form) != nullptr) {
        return picture;
    }
    const std::size_t stride = bytesPerPixel(form) * shape.width;
    auto pixels = ByteArray::ofLength(stride * shape.height);
    if (!pixels) {
        return outOfMemory(picture->name());
    }
    if (auto error =
            picture->readPixels(form, pixels->data(), static_cast<std::ptrdiff_t>(stride))) {
        return *error;
    }
    return std::make_shared<DecodedPicture>(shape, picture->name(), std::move(*pixels));
}

} // namespace vistrane
