#include "backends/pictures/rgb_rows.h"

#include <cstring>

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

void convertRows(const std::uint8_t* from, PixelForm fromForm, const PictureShape& shape,
                 PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride) {
    const std::size_t fromStride = bytesPerPixel(fromForm) * shape.width;
    for (std::size_t y = 0; y < shape.height; ++y) {
        std::uint8_t* row = rows + static_cast<std::ptrdiff_t>(y) * stride;
        if (form == fromForm) {
            std::memcpy(row, from + y * fromStride, fromStride);
        } else {
            convertRow(from + y * fromStride, fromForm, row, form, shape.width);
        }
    }
}

} // namespace vistrane
