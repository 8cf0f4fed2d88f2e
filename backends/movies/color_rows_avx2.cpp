#include "backends/movies/color_rows_avx2.h"

#if defined(__x86_64__)

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "backends/movies/color_weights.h"

// A pixel is split into two pairs of 16-bit numbers, (0, green) and (red, blue), the first one low.
// One multiply-and-add weights red and blue, another one weights green.
//
// The weights of chroma fit into signed 16 bits. The weight of green in luma does not, so 65536 is
// subtracted from it. Adding green in its place in the pixel, which is 65536 times green,
// compensates.

namespace vistrane {

namespace {

static_assert(lumaWeights.green > INT16_MAX && lumaWeights.green - 65536 >= INT16_MIN);

/// Two 16-bit numbers in the order of a pixel.
constexpr int pair(std::int32_t low, std::int32_t high) {
    return static_cast<int>(static_cast<std::uint32_t>(high) << 16 |
                            (static_cast<std::uint32_t>(low) & 0xFFFFU));
}

constexpr int lumaRedBlue = pair(lumaWeights.red, lumaWeights.blue);
constexpr int lumaGreen = pair(0, lumaWeights.green - 65536);
constexpr int blueRedBlue = pair(blueWeights.red, blueWeights.blue);
constexpr int blueGreen = pair(0, blueWeights.green);
constexpr int redRedBlue = pair(redWeights.red, redWeights.blue);
constexpr int redGreen = pair(0, redWeights.green);
constexpr int greenPlace = 0x00FF0000;

/// Operands of a shuffle of two vectors of pixels.
constexpr int evenOnes = 0x88;
constexpr int oddOnes = 0xDD;

/// Pixels that one iteration converts.
constexpr std::size_t step = 32;

[[gnu::target("avx2")]] __m256i load8(const std::uint8_t* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

[[gnu::target("avx2")]] __m256i greenOf8(__m256i pixels) {
    return _mm256_and_si256(pixels, _mm256_set1_epi32(greenPlace));
}

[[gnu::target("avx2")]] __m256i redBlueOf8(__m256i pixels) {
    return _mm256_srli_epi16(pixels, 8);
}

[[gnu::target("avx2")]] __m256i lumaOf8(const std::uint8_t* from) {
    const __m256i pixels = load8(from);
    const __m256i green = greenOf8(pixels);
    const __m256i redBlue = _mm256_madd_epi16(redBlueOf8(pixels), _mm256_set1_epi32(lumaRedBlue));
    const __m256i rest = _mm256_madd_epi16(green, _mm256_set1_epi32(lumaGreen));
    const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(redBlue, rest),
                                         _mm256_add_epi32(green, _mm256_set1_epi32(lumaOffset)));
    return _mm256_srli_epi32(sum, fractionBits);
}

[[gnu::target("avx2")]] void convertLuma(const std::uint8_t* pixels, std::size_t width,
                                         std::uint8_t* luma) {
    // Packing works within each half of a vector. This restores the order of the groups of four.
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    std::size_t x = 0;
    for (; x + step <= width; x += step) {
        const std::uint8_t* from = pixels + 4 * x;
        const __m256i low = _mm256_packs_epi32(lumaOf8(from), lumaOf8(from + 32));
        const __m256i high = _mm256_packs_epi32(lumaOf8(from + 64), lumaOf8(from + 96));
        const __m256i packed = _mm256_packus_epi16(low, high);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(luma + x),
                            _mm256_permutevar8x32_epi32(packed, order));
    }
    convertLumaPlainly(pixels + 4 * x, width - x, luma + x);
}

/// The even or the odd ones of 16 pixels, with their pairs in the order 0, 2, 1, 3.
template <int selection>
[[gnu::target("avx2")]] __m256i everySecondOf16(const std::uint8_t* from) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(load8(from)),
                                                 _mm256_castsi256_ps(load8(from + 32)), selection));
}

struct SumsOf8 {
    __m256i redBlue;
    __m256i green;

    [[gnu::target("avx2")]] SumsOf8()
        : redBlue(_mm256_setzero_si256()), green(_mm256_setzero_si256()) {}

    [[gnu::target("avx2")]] void add(__m256i pixels) {
        redBlue = _mm256_add_epi16(redBlue, redBlueOf8(pixels));
        green = _mm256_add_epi16(green, greenOf8(pixels));
    }
    [[gnu::target("avx2")]] void twice() {
        redBlue = _mm256_add_epi16(redBlue, redBlue);
        green = _mm256_add_epi16(green, green);
    }
};

[[gnu::target("avx2")]] SumsOf8 sumsOf8(const std::uint8_t* top, const std::uint8_t* bottom) {
    SumsOf8 sums;
    sums.add(everySecondOf16<evenOnes>(top));
    sums.add(everySecondOf16<evenOnes>(bottom));
    sums.twice();
    sums.add(everySecondOf16<evenOnes>(top - 4));
    sums.add(everySecondOf16<evenOnes>(bottom - 4));
    sums.add(everySecondOf16<oddOnes>(top));
    sums.add(everySecondOf16<oddOnes>(bottom));
    return sums;
}

[[gnu::target("avx2")]] __m256i chromaOf8(const SumsOf8& sums, int redBlueWeights,
                                          int greenWeights) {
    const __m256i sum =
        _mm256_add_epi32(_mm256_madd_epi16(sums.redBlue, _mm256_set1_epi32(redBlueWeights)),
                         _mm256_madd_epi16(sums.green, _mm256_set1_epi32(greenWeights)));
    return _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(chromaOffset)), chromaBits);
}

[[gnu::target("avx2")]] void convertChroma(const std::uint8_t* top, const std::uint8_t* bottom,
                                           std::size_t width, std::uint8_t* blueDifference,
                                           std::uint8_t* redDifference) {
    std::size_t x = std::min<std::size_t>(2, width); // the first column has no left neighbour
    convertChromaPlainly(top, bottom, width, 0, x, blueDifference, redDifference);
    for (; x + step <= width; x += step) {
        const SumsOf8 low = sumsOf8(top + 4 * x, bottom + 4 * x);
        const SumsOf8 high = sumsOf8(top + 4 * x + 64, bottom + 4 * x + 64);
        const __m256i blue = _mm256_packs_epi32(chromaOf8(low, blueRedBlue, blueGreen),
                                                chromaOf8(high, blueRedBlue, blueGreen));
        const __m256i red = _mm256_packs_epi32(chromaOf8(low, redRedBlue, redGreen),
                                               chromaOf8(high, redRedBlue, redGreen));
        // Each half holds every second pair of Cb samples, then of Cr samples.
        const __m256i both = _mm256_packus_epi16(blue, red);
        const __m128i first = _mm256_castsi256_si128(both);
        const __m128i second = _mm256_extracti128_si256(both, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(blueDifference + x / 2),
                         _mm_unpacklo_epi16(first, second));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(redDifference + x / 2),
                         _mm_unpackhi_epi16(first, second));
    }
    convertChromaPlainly(top, bottom, width, x, width, blueDifference, redDifference);
}

} // namespace

std::optional<RowConversion> avx2RowConversion() {
    if (!__builtin_cpu_supports("avx2")) {
        return std::nullopt;
    }
    return RowConversion{convertLuma, convertChroma};
}

} // namespace vistrane

#else

namespace vistrane {

std::optional<RowConversion> avx2RowConversion() {
    return std::nullopt;
}

} // namespace vistrane

#endif
