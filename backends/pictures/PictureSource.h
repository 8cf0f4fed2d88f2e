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

/// How the components of a pixel lie in memory, one byte each, colour not multiplied by alpha.
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

/// What is known of a picture before its pixels are decoded.
struct PictureShape {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Only a density that `densityMakesSense`.
    std::optional<PixelDensity> density;
    /// Where false, every pixel is opaque.
    bool mayBeTransparent = false;

    /// In points: pixels x 72 / dpi where there is a density, else pixels.
    NSSize sizeInPoints() const;
};

/// The dots per inch that a density in whole pixels per metre stands for.
///
/// A metre is no whole number of inches: 144 dpi is written as 5669 pixels per metre, which is
/// 143.9926 dpi, and 72 dpi as 2835, which is 72.009, so that 1280 pixels would become 1279.8
/// points and lose a column. A density that some whole number of dpi is rounded to, up or down,
/// therefore means that number.
double dotsPerInch(std::uint32_t pixelsPerMetre);

/// Whether a picture of so many pixels has at least one point and at most `PictureLimits`' side in
/// both directions. Other densities are nonsense (often an aspect ratio of 1:1 that claims to be
/// in metres) and are best forgotten.
bool densityMakesSense(PixelDensity density, std::uint32_t width, std::uint32_t height);

/// Takes the rows of a picture as they are decoded.
class PictureRows {
public:
    virtual ~PictureRows() = default;
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;

    /// Before the top row. Another time when the rows up to there do not count: all come again.
    virtual void begin() = 0;
    /// From the top; to be read until this returns.
    virtual void take(const std::uint8_t* row) = 0;

protected:
    PictureRows() = default;
};

/// A picture whose form was checked and whose pixels can be had. Immutable; any thread.
class PictureSource {
public:
    virtual ~PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;

    const PictureShape& shape() const { return shape_; }

    /// A path, or a word that says where the picture comes from; for messages.
    const std::string& name() const { return name_; }

    /// Writes all pixels as sRGB values: the top row at `rows`, each next one `stride` bytes on (a
    /// negative stride turns the picture upside down). RGB leaves alpha out. Nothing beyond a
    /// row's pixels is touched. On failure the rows hold anything.
    virtual std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                              std::ptrdiff_t stride) const = 0;

    /// Hands on the same rows, one after the other: there is no need for memory for all of them.
    /// After a failure those that came do not count.
    virtual std::optional<NSError> passRows(PixelForm form, PictureRows& rows) const;

    /// Makes an opaque picture smaller for a view: by the average of the area, 0xFFRRGGBB, neither
    /// side less than 1 or larger than the picture's own. `stride` is in bytes. On failure the
    /// pixels are anything.
    virtual std::optional<NSError> readSmaller(std::size_t width, std::size_t height,
                                               std::uint32_t* pixels, std::ptrdiff_t stride) const;

    /// A view is going to ask for that: whoever decodes the picture first may see to it.
    virtual void expectSmaller(std::size_t width, std::size_t height) const {
        (void)width;
        (void)height;
    }

    /// The top row, where all rows lie in memory in that form without gaps; else null. Valid as
    /// long as the source.
    virtual const std::uint8_t* pixelsInMemory(PixelForm form) const {
        (void)form;
        return nullptr;
    }

protected:
    PictureSource(PictureShape shape, std::string name) : shape_(shape), name_(std::move(name)) {}

private:
    PictureShape shape_;
    std::string name_;
};

/// A picture, or why the bytes are none.
using PictureSourceResult = std::variant<std::shared_ptr<const PictureSource>, NSError>;

/// A picture in the bytes of a PNG file. The whole file is checked except for the pixels, which
/// are decoded each time they are read.
PictureSourceResult pictureFromPng(ByteArray file, std::string name, const PictureLimits& limits);
PictureSourceResult pictureFromPng(std::shared_ptr<const NSData> file, std::string name,
                                   const PictureLimits& limits);

/// A picture in the bytes of a binary PPM file of 8 bits; see `ppm.h`.
PictureSourceResult pictureFromPpm(std::shared_ptr<const NSData> file, std::string name,
                                   const PictureLimits& limits);

/// A picture in the bytes that `tiffFile` makes; see `tiff.h`.
PictureSourceResult pictureFromTiff(std::shared_ptr<const NSData> file, std::string name,
                                    const PictureLimits& limits);

} // namespace vistrane
