#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

/// Turns a PNG file's rows, as its filters leave them, into rows of pixels.
class PngExpansion {
public:
    /// Nothing where the file has one of the rarer forms: 16 bits, or a colour that stands for
    /// transparency, or parts that readers differ about.
    static std::optional<PngExpansion> of(std::span<const std::uint8_t> file,
                                          const PngHeader& header, PixelForm form);

    /// Whether the file's rows already are what is wanted.
    bool isCopy() const { return kind_ == Kind::Copy; }

    /// 16 bytes can be read past the end of `row`; none is written past the pixels' end.
    void expand(const std::uint8_t* row, std::uint8_t* pixels) const;

    /// Of a pixel in the file, but 1 if a byte holds several.
    std::size_t pixelBytes() const;
    /// Of a row in the file.
    std::size_t rowBytes() const;

private:
    enum class Kind { Copy, Table, Colours, ColoursAndAlpha, GreyAndAlpha };

    PngExpansion(const PngHeader& header, PixelForm form);
    void fillWithGreys();
    bool fillWithPalette(std::span<const std::uint8_t> palette,
                         std::span<const std::uint8_t> alpha);
    void expandByTable(const std::uint8_t* row, std::uint8_t* pixels) const;

    Kind kind_ = Kind::Copy;
    PixelForm form_;
    std::uint32_t width_;
    unsigned bitDepth_;
    std::size_t components_;
    /// What a value stands for, in the form that is wanted; of RGB, three bytes.
    std::array<std::array<std::uint8_t, 4>, 256> table_{};
};

/// Three bytes a pixel become four, with an alpha of 255 after them or, for ARGB, before. 16 bytes
/// can be read past the end of `colours`.
void addAlpha(const std::uint8_t* colours, PixelForm form, std::uint8_t* pixels, std::size_t count);

/// The same in plain C++, for any processor; the tests compare the two.
void addAlphaPlainly(const std::uint8_t* colours, PixelForm form, std::uint8_t* pixels,
                     std::size_t count);

} // namespace vistrane
