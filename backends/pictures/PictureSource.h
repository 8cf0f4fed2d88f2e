#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureLimits.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The order of a pixel's components in memory: one byte each, alpha not premultiplied.
enum class PixelForm { ARGB, RGBA, RGB };

constexpr std::size_t bytesPerPixel(PixelForm form) {
    return form == PixelForm::RGB ? 3 : 4;
}

/// Pixels per metre.
struct PixelDensity {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    bool operator==(const PixelDensity&) const = default;
};

/// What is known about a picture before its pixels are decoded.
struct PictureShape {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Set only if `densityMakesSense`.
    std::optional<PixelDensity> density;
    /// If false, every pixel is opaque.
    bool mayBeTransparent = false;

    bool operator==(const PictureShape&) const = default;

    /// The smallest form that keeps all values.
    PixelForm compactForm() const { return mayBeTransparent ? PixelForm::RGBA : PixelForm::RGB; }

    /// In points: pixels x 72 / dpi if there is a density, otherwise pixels.
    NSSize sizeInPoints() const;
};

/// Converts a density in whole pixels per metre to dots per inch.
///
/// If a whole number of dpi rounds to this density, up or down, the result is that number. 144 dpi
/// is stored as 5669 pixels per metre, which is 143.9926 dpi, and 72 dpi as 2835, which is 72.009.
/// Without this rule, 1280 pixels would become 1279.8 points and lose a column.
double dotsPerInch(std::uint32_t pixelsPerMetre);

/// Whether both sides of a picture of that size are from one point to `PictureLimits::largestSide`
/// points long. Other densities are ignored, such as an aspect ratio of 1:1 that is stored as
/// pixels per metre.
bool densityMakesSense(PixelDensity density, std::uint32_t width, std::uint32_t height);

/// Receives the rows of a picture while they are decoded.
class PictureRows {
public:
    virtual ~PictureRows() = default;
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;

    /// Called before the top row. Called again if decoding starts over; all rows are then passed
    /// again.
    virtual void begin() = 0;
    /// Called for each row, from the top. The row is valid during the call.
    virtual void take(const std::uint8_t* row) = 0;

protected:
    PictureRows() = default;
};

/// A picture whose file structure is valid and whose pixels are decoded on request. Immutable; any
/// thread.
class PictureSource {
public:
    virtual ~PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;

    const PictureShape& shape() const { return shape_; }

    /// A path or a description, for messages.
    const std::string& name() const { return name_; }

    /// What is damaged in the file although all pixels are whole; empty if nothing is.
    const std::string& flaw() const { return flaw_; }

    /// Writes all pixels as sRGB values: the top row at `rows`, rows `stride` bytes apart (a
    /// negative stride turns the picture upside down). RGB drops alpha. Writes nothing between the
    /// rows. After a failure their content is unspecified.
    virtual std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                              std::ptrdiff_t stride) const = 0;

    /// Passes the same rows one by one, if possible without memory for all of them. After a failure
    /// the passed rows are invalid.
    virtual std::optional<NSError> passRows(PixelForm form, PictureRows& rows) const;

    /// Scales an opaque picture down for a view, by area averaging, to 0xFFRRGGBB pixels. `width`
    /// and `height` are from 1 to the picture's own; `stride` is in bytes. After a failure the
    /// pixels are unspecified.
    virtual std::optional<NSError> readSmaller(std::size_t width, std::size_t height,
                                               std::uint32_t* pixels, std::ptrdiff_t stride) const;

    /// Announces a `readSmaller` of that size, so that a decoding before it can prepare the result.
    virtual void expectSmaller(std::size_t width, std::size_t height) const {
        (void)width;
        (void)height;
    }

    /// The picture's file as `encodePng` makes it, if it was made ahead; otherwise null.
    virtual std::shared_ptr<const ByteArray> encodedAhead() const { return nullptr; }

    /// The top row, if memory holds all rows in that form, contiguously; otherwise null. Valid as
    /// long as this object exists.
    virtual const std::uint8_t* pixelsInMemory(PixelForm form) const {
        (void)form;
        return nullptr;
    }

protected:
    PictureSource(PictureShape shape, std::string name, std::string flaw = {})
        : shape_(shape), name_(std::move(name)), flaw_(std::move(flaw)) {}

private:
    PictureShape shape_;
    std::string name_;
    std::string flaw_;
};

/// A picture, or why there is none.
using PictureSourceResult = std::variant<std::shared_ptr<const PictureSource>, NSError>;

/// The picture of a PNG file. Validates the file except for the compressed pixels, which are
/// decoded each time they are read. In a file with a flaw they are validated as well.
PictureSourceResult pictureFromPng(ByteArray file, std::string name, const PictureLimits& limits);
PictureSourceResult pictureFromPng(std::shared_ptr<const NSData> file, std::string name,
                                   const PictureLimits& limits);

} // namespace vistrane
