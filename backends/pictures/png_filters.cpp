#include "backends/pictures/png_filters.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vistrane {

namespace {

std::uint8_t sum(unsigned a, unsigned b) {
    return static_cast<std::uint8_t>(a + b);
}

unsigned nearest(int left, int above, int aboveLeft) {
    const int toLeft = std::abs(above - aboveLeft);
    const int toAbove = std::abs(left - aboveLeft);
    const int toAboveLeft = std::abs(left + above - 2 * aboveLeft);
    if (toLeft <= toAbove && toLeft <= toAboveLeft) {
        return static_cast<unsigned>(left);
    }
    return static_cast<unsigned>(toAbove <= toAboveLeft ? above : aboveLeft);
}

void addUp(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
           std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        row[i] = sum(filtered[i], above[i]);
    }
}

// The following start at the byte `first`, which is 0 or has a pixel to its left.

void addLeft(const std::uint8_t* filtered, std::uint8_t* row, std::size_t first, std::size_t length,
             std::size_t pixelBytes) {
    std::size_t i = first;
    for (; i < std::min(pixelBytes, length); ++i) {
        row[i] = filtered[i];
    }
    for (; i < length; ++i) {
        row[i] = sum(filtered[i], row[i - pixelBytes]);
    }
}

void addMean(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
             std::size_t first, std::size_t length, std::size_t pixelBytes) {
    std::size_t i = first;
    for (; i < std::min(pixelBytes, length); ++i) {
        row[i] = sum(filtered[i], above[i] / 2U);
    }
    for (; i < length; ++i) {
        row[i] = sum(filtered[i], (static_cast<unsigned>(row[i - pixelBytes]) + above[i]) / 2);
    }
}

void addNearest(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
                std::size_t first, std::size_t length, std::size_t pixelBytes) {
    std::size_t i = first;
    for (; i < std::min(pixelBytes, length); ++i) {
        // Bytes left of the row are 0, so the byte above is the nearest.
        row[i] = sum(filtered[i], above[i]);
    }
    for (; i < length; ++i) {
        row[i] = sum(filtered[i], nearest(row[i - pixelBytes], above[i], above[i - pixelBytes]));
    }
}

#if defined(__SSE2__)

/// Reads and writes 4 bytes, even for pixels of three.
__m128i loadPixel(const std::uint8_t* bytes) {
    int word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return _mm_cvtsi32_si128(word);
}

void storePixel(std::uint8_t* bytes, __m128i pixel) {
    const int word = _mm_cvtsi128_si32(pixel);
    std::memcpy(bytes, &word, sizeof word);
}

/// How many bytes of a row can be processed in words without accessing bytes past its end.
std::size_t inWords(std::size_t length, std::size_t pixelBytes) {
    const std::size_t pixels = length / pixelBytes;
    return pixelBytes == 4 ? length : pixels < 2 ? 0 : (pixels - 1) * pixelBytes;
}

template <std::size_t PixelBytes>
void addLeftFast(const std::uint8_t* filtered, std::uint8_t* row, std::size_t length) {
    const std::size_t end = inWords(length, PixelBytes);
    __m128i left = _mm_setzero_si128();
    for (std::size_t i = 0; i < end; i += PixelBytes) {
        left = _mm_add_epi8(left, loadPixel(filtered + i));
        storePixel(row + i, left);
    }
    addLeft(filtered, row, end, length, PixelBytes);
}

template <std::size_t PixelBytes>
void addMeanFast(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
                 std::size_t length) {
    const std::size_t end = inWords(length, PixelBytes);
    const __m128i ones = _mm_set1_epi8(1);
    __m128i left = _mm_setzero_si128();
    for (std::size_t i = 0; i < end; i += PixelBytes) {
        const __m128i up = loadPixel(above + i);
        // The instruction rounds up, but the filter rounds down.
        const __m128i odd = _mm_and_si128(_mm_xor_si128(left, up), ones);
        left = _mm_add_epi8(loadPixel(filtered + i), _mm_sub_epi8(_mm_avg_epu8(left, up), odd));
        storePixel(row + i, left);
    }
    addMean(filtered, above, row, end, length, PixelBytes);
}

__m128i magnitude(__m128i value) {
    return _mm_max_epi16(value, _mm_sub_epi16(_mm_setzero_si128(), value));
}

__m128i choose(__m128i which, __m128i ifSet, __m128i ifNot) {
    return _mm_or_si128(_mm_and_si128(which, ifSet), _mm_andnot_si128(which, ifNot));
}

template <std::size_t PixelBytes>
void addNearestFast(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
                    std::size_t length) {
    const std::size_t end = inWords(length, PixelBytes);
    const __m128i zero = _mm_setzero_si128();
    __m128i left = zero;
    __m128i aboveLeft = zero;
    for (std::size_t i = 0; i < end; i += PixelBytes) {
        const __m128i up = _mm_unpacklo_epi8(loadPixel(above + i), zero);
        const __m128i added = _mm_unpacklo_epi8(loadPixel(filtered + i), zero);
        const __m128i rise = _mm_sub_epi16(up, aboveLeft);
        const __m128i run = _mm_sub_epi16(left, aboveLeft);
        const __m128i toLeft = magnitude(rise);
        const __m128i toAbove = magnitude(run);
        const __m128i toAboveLeft = magnitude(_mm_add_epi16(rise, run));
        const __m128i least = _mm_min_epi16(toAboveLeft, _mm_min_epi16(toLeft, toAbove));
        const __m128i predicted = choose(_mm_cmpeq_epi16(least, toLeft), left,
                                         choose(_mm_cmpeq_epi16(least, toAbove), up, aboveLeft));
        // Adds bytes, so the upper halves of the words stay 0.
        left = _mm_add_epi8(added, predicted);
        aboveLeft = up;
        storePixel(row + i, _mm_packus_epi16(left, left));
    }
    addNearest(filtered, above, row, end, length, PixelBytes);
}

void addUpFast(const std::uint8_t* filtered, const std::uint8_t* above, std::uint8_t* row,
               std::size_t length) {
    const std::size_t end = length & ~std::size_t{15};
    for (std::size_t i = 0; i < end; i += 16) {
        const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i*>(filtered + i));
        const __m128i up = _mm_loadu_si128(reinterpret_cast<const __m128i*>(above + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row + i), _mm_add_epi8(some, up));
    }
    addUp(filtered + end, above + end, row + end, length - end);
}

template <std::size_t PixelBytes>
void unfilterFast(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                  std::uint8_t* row, std::size_t length) {
    switch (filter) {
    case PngFilter::Sub:
        addLeftFast<PixelBytes>(filtered, row, length);
        break;
    case PngFilter::Average:
        addMeanFast<PixelBytes>(filtered, above, row, length);
        break;
    case PngFilter::Paeth:
        addNearestFast<PixelBytes>(filtered, above, row, length);
        break;
    default:
        unfilterRowPlainly(filter, filtered, above, row, length, PixelBytes);
    }
}

#endif

} // namespace

void unfilterRowPlainly(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                        std::uint8_t* row, std::size_t length, std::size_t pixelBytes) {
    switch (filter) {
    case PngFilter::None:
        std::memcpy(row, filtered, length);
        break;
    case PngFilter::Sub:
        addLeft(filtered, row, 0, length, pixelBytes);
        break;
    case PngFilter::Up:
        addUp(filtered, above, row, length);
        break;
    case PngFilter::Average:
        addMean(filtered, above, row, 0, length, pixelBytes);
        break;
    case PngFilter::Paeth:
        addNearest(filtered, above, row, 0, length, pixelBytes);
        break;
    }
}

void unfilterRow(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                 std::uint8_t* row, std::size_t length, std::size_t pixelBytes) {
#if defined(__SSE2__)
    if (filter == PngFilter::Up) {
        addUpFast(filtered, above, row, length);
        return;
    }
    if (pixelBytes == 3) {
        unfilterFast<3>(filter, filtered, above, row, length);
        return;
    }
    if (pixelBytes == 4) {
        unfilterFast<4>(filter, filtered, above, row, length);
        return;
    }
#endif
    unfilterRowPlainly(filter, filtered, above, row, length, pixelBytes);
}

void filterRowUp(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* filtered,
                 std::size_t length) {
    filtered[0] = static_cast<std::uint8_t>(PngFilter::Up);
    if (above == nullptr) {
        std::memcpy(filtered + 1, row, length);
        return;
    }
    for (std::size_t i = 0; i < length; ++i) {
        filtered[i + 1] = static_cast<std::uint8_t>(row[i] - above[i]);
    }
}

} // namespace vistrane
