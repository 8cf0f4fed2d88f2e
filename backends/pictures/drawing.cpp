#include "backends/pictures/drawing.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/picture_errors.h"
#include "backends/pictures/resampling.h"

namespace vistrane {

namespace {

constexpr std::size_t pixelBytes = 4;

/// A range of one axis, in points.
struct Range {
    double from = 0.0;
    double to = 0.0;
    bool isEmpty() const { return !(from < to); }
};

/// One axis of a drawing. Positions count from the surface's left or top edge.
struct Axis {
    /// The pixels to draw.
    std::size_t first = 0;
    std::size_t count = 0;
    /// Where surface pixel `first` begins in the picture, and the length of a surface pixel, in
    /// picture pixels.
    double origin = 0.0;
    double step = 1.0;
    /// The part of the picture that may be drawn, in picture pixels.
    double low = 0.0;
    double high = 0.0;

    bool isUnscaled(std::size_t pixels) const {
        return step == 1.0 && origin == 0.0 && count == pixels;
    }
    Resampling resampling() const {
        return Resampling(origin, step, count, low, high, Shrinking::ByArea);
    }
};

/// The first pixel whose centre is not before `edge`, clamped to 0 and `size`.
std::size_t pixelFrom(double edge, std::size_t size) {
    return static_cast<std::size_t>(
        std::clamp(std::ceil(edge - 0.5), 0.0, static_cast<double>(size)));
}

/// `place` is the position of the picture's point 0 on the surface. `part` is the part of the
/// picture to draw, in points. `points` and `pixels` are the picture's size, `surface` is the
/// surface's, in pixels.
Axis axisOf(double place, Range part, double points, std::size_t pixels, std::size_t surface) {
    Axis axis;
    axis.first = pixelFrom(place + part.from, surface);
    axis.count = pixelFrom(place + part.to, surface) - axis.first;
    axis.step = static_cast<double>(pixels) / points;
    axis.origin = (static_cast<double>(axis.first) - place) * axis.step;
    axis.low = std::clamp(part.from * axis.step, 0.0, static_cast<double>(pixels));
    axis.high = std::clamp(part.to * axis.step, 0.0, static_cast<double>(pixels));
    return axis;
}

// Beyond this, a double does not hold fractions of a point exactly enough.
constexpr double farthest = 1e9;

NSSize scaled(NSSize size, NSSize scale) {
    return {size.width * scale.width, size.height * scale.height};
}

bool isLength(NSSize size) {
    return size.width > 0.0 && size.width <= farthest && size.height > 0.0 &&
           size.height <= farthest;
}

bool isPlace(const Drawing& drawing) {
    const auto sane = [](double value) { return std::abs(value) <= farthest; };
    return sane(drawing.point.x) && sane(drawing.point.y) && sane(drawing.from.origin.x) &&
           sane(drawing.from.origin.y) && sane(drawing.from.size.width) &&
           sane(drawing.from.size.height) && drawing.fraction >= 0.0;
}

Range within(double origin, double length, double points) {
    return {std::max(origin, 0.0), std::min(origin + length, points)};
}

std::uint8_t scaled(unsigned value, unsigned alpha) {
    // value * alpha / 255, rounded to nearest.
    const unsigned product = value * alpha + 128;
    return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

/// Multiplies the colour by alpha.
void premultiply(std::uint8_t* row, std::size_t count) {
    for (std::uint8_t* pixel = row; pixel != row + count * pixelBytes; pixel += pixelBytes) {
        pixel[1] = scaled(pixel[1], pixel[0]);
        pixel[2] = scaled(pixel[2], pixel[0]);
        pixel[3] = scaled(pixel[3], pixel[0]);
    }
}

void premultiplyOntoBlack(std::uint8_t* row, std::size_t count) {
    premultiply(row, count);
    for (std::size_t i = 0; i < count; ++i) {
        row[i * pixelBytes] = 0xFF;
    }
}

/// The usual case: decodes directly into the surface.
std::optional<NSError> decodeInto(const PictureSource& picture, std::uint8_t* rows,
                                  std::ptrdiff_t stride) {
    if (auto error = picture.readPixels(PixelForm::ARGB, rows, stride)) {
        return error;
    }
    const PictureShape& shape = picture.shape();
    for (std::uint32_t y = 0; shape.mayBeTransparent && y < shape.height; ++y) {
        premultiplyOntoBlack(rows + static_cast<std::ptrdiff_t>(y) * stride, shape.width);
    }
    return std::nullopt;
}

/// Draws premultiplied pixels: alpha, red, green, blue, from 0 to 255.
class RowDrawing {
public:
    RowDrawing(NSCompositingOperation operation, double fraction)
        : fraction_(static_cast<float>(std::min(fraction, 1.0))),
          over_(operation == NSCompositingOperationSourceOver) {}

    /// The cubic may overshoot: clamps alpha to its range and colour to alpha.
    void drawPixel(const float* from, std::uint8_t* to) const {
        const float alpha = std::clamp(from[0], 0.0F, 255.0F);
        const float kept = over_ ? 1.0F - alpha * fraction_ / 255.0F : 0.0F;
        for (std::size_t i = 1; i < pixelBytes; ++i) {
            const float colour = std::clamp(from[i], 0.0F, alpha);
            to[i] = nearestByte(colour * fraction_ + static_cast<float>(to[i]) * kept);
        }
        to[0] = 0xFF;
    }

private:
    float fraction_;
    bool over_;
};

/// All other cases: decodes the whole picture, then resamples it row by row.
std::optional<NSError> drawScaled(const PictureSource& picture, const Surface& surface,
                                  const Axis& across, const Axis& down, const RowDrawing& drawing) {
    const PictureShape& shape = picture.shape();
    const std::size_t stride = pixelBytes * shape.width;
    auto bitmap = ByteArray::ofLength(stride * shape.height);
    if (!bitmap) {
        return outOfMemory(picture.name());
    }
    if (auto error = picture.readPixels(PixelForm::ARGB, bitmap->data(),
                                        static_cast<std::ptrdiff_t>(stride))) {
        return error;
    }
    for (std::uint32_t y = 0; shape.mayBeTransparent && y < shape.height; ++y) {
        premultiply(bitmap->data() + y * stride, shape.width);
    }
    RowResampler resampler(across.resampling(), down.resampling());
    for (std::size_t y = 0; y < down.count; ++y) {
        const float* from = resampler.row(y, bitmap->data(), stride).data();
        std::uint8_t* to = surface.rows +
                           static_cast<std::ptrdiff_t>(down.first + y) * surface.stride +
                           static_cast<std::ptrdiff_t>(across.first * pixelBytes);
        for (std::size_t x = 0; x < across.count; ++x, from += pixelBytes, to += pixelBytes) {
            drawing.drawPixel(from, to);
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<NSError> drawPicture(const PictureSource& picture, const Surface& surface,
                                   const Drawing& drawing) {
    const PictureShape& shape = picture.shape();
    const NSSize points = shape.sizeInPoints();
    const NSRect part = drawing.from == NSZeroRect ? NSRect{{0.0, 0.0}, points} : drawing.from;
    const NSSize size = scaled(points, drawing.scale);
    const NSRect from{{part.origin.x * drawing.scale.width, part.origin.y * drawing.scale.height},
                      scaled(part.size, drawing.scale)};
    if (!isPlace({drawing.point, from, drawing.operation, drawing.fraction}) || !isLength(size)) {
        return std::nullopt;
    }
    const Range acrossPart = within(from.origin.x, from.size.width, size.width);
    const Range upPart = within(from.origin.y, from.size.height, size.height);
    if (acrossPart.isEmpty() || upPart.isEmpty()) {
        return std::nullopt;
    }
    const Axis across =
        axisOf(drawing.point.x - from.origin.x, acrossPart, size.width, shape.width, surface.width);
    // Rows count from the top, points from the bottom.
    const double top =
        static_cast<double>(surface.height) - (drawing.point.y - from.origin.y + size.height);
    const Axis down = axisOf(top, {size.height - upPart.to, size.height - upPart.from}, size.height,
                             shape.height, surface.height);
    if (across.count == 0 || down.count == 0) {
        return std::nullopt;
    }
    const bool replaces =
        drawing.fraction >= 1.0 &&
        (drawing.operation == NSCompositingOperationCopy || !shape.mayBeTransparent);
    if (replaces && across.isUnscaled(shape.width) && down.isUnscaled(shape.height)) {
        return decodeInto(picture,
                          surface.rows + static_cast<std::ptrdiff_t>(down.first) * surface.stride +
                              static_cast<std::ptrdiff_t>(across.first * pixelBytes),
                          surface.stride);
    }
    return drawScaled(picture, surface, across, down,
                      RowDrawing(drawing.operation, drawing.fraction));
}

} // namespace vistrane
