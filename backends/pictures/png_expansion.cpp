#include "backends/pictures/png_expansion.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vistrane {

namespace {

std::size_t componentsOf(PngColour colour) {
    constexpr std::array<std::size_t, 7> components = {1, 0, 3, 1, 2, 0, 4};
    return components[static_cast<std::size_t>(colour)];
}

/// The offset of a pixel's first colour component; alpha is at the other end.
std::size_t colourOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 1 : 0;
}

std::size_t alphaOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 0 : 3;
}

void put(const std::uint8_t* colour, std::uint8_t alpha, PixelForm form, std::uint8_t* pixel) {
    std::memcpy(pixel + colourOffset(form), colour, 3);
    if (form != PixelForm::RGB) {
        pixel[alphaOffset(form)] = alpha;
    }
}

void moveAlphaToFront(const std::uint8_t* row, std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, row + i * 4, 4);
        pixel =
            std::endian::native == std::endian::little ? std::rotl(pixel, 8) : std::rotr(pixel, 8);
        std::memcpy(pixels + i * 4, &pixel, 4);
    }
}

void dropAlpha(const std::uint8_t* row, std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(pixels + i * 3, row + i * 4, 3);
    }
}

void spreadGrey(const std::uint8_t* row, PixelForm form, std::uint8_t* pixels, std::size_t count) {
    const std::size_t step = bytesPerPixel(form);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t grey = row[i * 2];
        const std::uint8_t colour[] = {grey, grey, grey};
        put(colour, row[i * 2 + 1], form, pixels + i * step);
    }
}

template <std::size_t Step>
void lookUp(const std::uint8_t* row, const std::array<std::array<std::uint8_t, 4>, 256>& table,
            std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(pixels + i * Step, table[row[i]].data(), Step);
    }
}

#if defined(__x86_64__)

__attribute__((target("ssse3"))) void addAlphaBySsse3(const std::uint8_t* colours, PixelForm form,
                                                      std::uint8_t* pixels, std::size_t count) {
    const bool alphaFirst = form == PixelForm::ARGB;
    const __m128i places =
        alphaFirst ? _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11)
                   : _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m128i alpha = _mm_set1_epi32(alphaFirst ? 0xFF : static_cast<int>(0xFF000000));
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const auto* from = reinterpret_cast<const __m128i*>(colours + i * 3);
        const __m128i four = _mm_shuffle_epi8(_mm_loadu_si128(from), places);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + i * 4), _mm_or_si128(four, alpha));
    }
    addAlphaPlainly(colours + i * 3, form, pixels + i * 4, count - i);
}

#endif

using AddAlpha = void (*)(const std::uint8_t*, PixelForm, std::uint8_t*, std::size_t);

AddAlpha chooseAddAlpha() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("ssse3")) {
        return addAlphaBySsse3;
    }
#endif
    return addAlphaPlainly;
}

} // namespace

void addAlphaPlainly(const std::uint8_t* colours, PixelForm form, std::uint8_t* pixels,
                     std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        put(colours + i * 3, 0xFF, form, pixels + i * 4);
    }
}

void addAlpha(const std::uint8_t* colours, PixelForm form, std::uint8_t* pixels,
              std::size_t count) {
    static const AddAlpha best = chooseAddAlpha();
    best(colours, form, pixels, count);
}

PngExpansion::PngExpansion(const PngHeader& header, PixelForm form)
    : form_(form), width_(header.width), bitDepth_(header.bitDepth),
      components_(componentsOf(header.colour)) {}

std::optional<PngExpansion> PngExpansion::of(std::span<const std::uint8_t> file,
                                             const PngHeader& header, PixelForm form) {
    PngExpansion expansion(header, form);
    if (header.bitDepth > 8 || !header.hasPlainColours ||
        (header.hasTransparencyChunk && header.colour != PngColour::Palette)) {
        return std::nullopt;
    }
    switch (header.colour) {
    case PngColour::Grey:
        expansion.fillWithGreys();
        break;
    case PngColour::Palette:
        if (!expansion.fillWithPalette(
                file.subspan(header.palette.offset, header.palette.length),
                file.subspan(header.transparency.offset, header.transparency.length))) {
            return std::nullopt;
        }
        break;
    case PngColour::Rgb:
        expansion.kind_ = form == PixelForm::RGB ? Kind::Copy : Kind::Colours;
        break;
    case PngColour::RgbAlpha:
        expansion.kind_ = form == PixelForm::RGBA ? Kind::Copy : Kind::ColoursAndAlpha;
        break;
    case PngColour::GreyAlpha:
        expansion.kind_ = Kind::GreyAndAlpha;
        break;
    }
    return expansion;
}

void PngExpansion::fillWithGreys() {
    kind_ = Kind::Table;
    const unsigned brightest = (1U << bitDepth_) - 1;
    for (unsigned i = 0; i <= brightest; ++i) {
        const auto grey = static_cast<std::uint8_t>(i * 255 / brightest);
        const std::uint8_t colour[] = {grey, grey, grey};
        put(colour, 0xFF, form_, table_[i].data());
    }
}

/// Values beyond the palette are black, like in libpng.
bool PngExpansion::fillWithPalette(std::span<const std::uint8_t> palette,
                                   std::span<const std::uint8_t> alpha) {
    kind_ = Kind::Table;
    const std::size_t colours = palette.size() / 3;
    if (colours > 1U << bitDepth_ || alpha.size() > colours) {
        return false;
    }
    for (std::size_t i = 0; i < table_.size(); ++i) {
        constexpr std::uint8_t black[] = {0, 0, 0};
        put(i < colours ? palette.data() + i * 3 : black, i < alpha.size() ? alpha[i] : 0xFF, form_,
            table_[i].data());
    }
    return true;
}

std::size_t PngExpansion::pixelBytes() const {
    return components_;
}

std::size_t PngExpansion::rowBytes() const {
    return (components_ * width_ * bitDepth_ + 7) / 8;
}

void PngExpansion::expand(const std::uint8_t* row, std::uint8_t* pixels) const {
    switch (kind_) {
    case Kind::Copy:
        std::memcpy(pixels, row, rowBytes());
        break;
    case Kind::Table:
        expandByTable(row, pixels);
        break;
    case Kind::Colours:
        addAlpha(row, form_, pixels, width_);
        break;
    case Kind::ColoursAndAlpha:
        if (form_ == PixelForm::ARGB) {
            moveAlphaToFront(row, pixels, width_);
        } else {
            dropAlpha(row, pixels, width_);
        }
        break;
    case Kind::GreyAndAlpha:
        spreadGrey(row, form_, pixels, width_);
        break;
    }
}

void PngExpansion::expandByTable(const std::uint8_t* row, std::uint8_t* pixels) const {
    const std::size_t step = bytesPerPixel(form_);
    if (bitDepth_ == 8) {
        step == 3 ? lookUp<3>(row, table_, pixels, width_) : lookUp<4>(row, table_, pixels, width_);
        return;
    }
    // The first pixel is in the highest bits.
    const unsigned mask = (1U << bitDepth_) - 1;
    for (std::size_t i = 0; i < width_; ++i) {
        const std::size_t lastBit = (i + 1) * bitDepth_ - 1;
        const unsigned value = row[lastBit / 8] >> (7 - lastBit % 8) & mask;
        std::memcpy(pixels + i * step, table_[value].data(), step);
    }
}

} // namespace vistrane
