#include "backends/pictures/averaging.h"

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vistrane {

namespace {

/// Sums are halved to fit into signed 16 bits.
constexpr int valueBits = 7 + 14;
constexpr std::int32_t half = 1 << (valueBits - 1);

std::size_t redOffset(PixelForm form) {
    return form == PixelForm::ARGB ? 1 : 0;
}

std::uint32_t pixelOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return 0xFF000000U | red << 16 | green << 8 | blue;
}

#if defined(__x86_64__)

[[gnu::target("avx2")]] void addWeightedByAvx2(const std::uint8_t* bytes, unsigned weight,
                                               std::uint16_t* sums, std::size_t count) {
    constexpr std::size_t step = 16;
    const __m256i weights = _mm256_set1_epi16(static_cast<short>(weight));
    std::size_t i = 0;
    for (; i + step <= count; i += step) {
        const __m256i values =
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i)));
        auto* const sum = reinterpret_cast<__m256i*>(sums + i);
        _mm256_storeu_si256(
            sum, _mm256_add_epi16(_mm256_loadu_si256(sum), _mm256_mullo_epi16(values, weights)));
    }
    addWeightedPlainly(bytes + i, weight, sums + i, count - i);
}

/// The sums of two pixels, interleaved by component.
template <std::size_t components>
__m128i twoPixels(const std::uint16_t* sums) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(sums));
    const __m128i second = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(sums + components));
    return _mm_srli_epi16(_mm_unpacklo_epi16(first, second), 1);
}

/// `red` is the position of red in a pixel.
template <std::size_t components, int red>
void averagePixelsBySse2(const std::uint16_t* sums, const AveragedParts& parts,
                         std::uint32_t* pixels) {
    for (std::size_t i = 0; i < parts.count(); ++i) {
        const std::uint16_t* from = sums + parts.firsts[i] * components;
        const std::int16_t* weights = parts.weightsOf(i);
        __m128i sum = _mm_set1_epi32(half);
        for (std::size_t tap = 0; tap < parts.taps; tap += 2, from += 2 * components) {
            int pair = 0;
            std::memcpy(&pair, weights + tap, sizeof pair);
            sum = _mm_add_epi32(sum,
                                _mm_madd_epi16(twoPixels<components>(from), _mm_set1_epi32(pair)));
        }
        const __m128i values = _mm_srli_epi32(sum, valueBits);
        pixels[i] = pixelOf(static_cast<std::uint32_t>(_mm_extract_epi16(values, 2 * red)),
                            static_cast<std::uint32_t>(_mm_extract_epi16(values, 2 * red + 2)),
                            static_cast<std::uint32_t>(_mm_extract_epi16(values, 2 * red + 4)));
    }
}

#endif

using AddWeighted = void (*)(const std::uint8_t*, unsigned, std::uint16_t*, std::size_t);

AddWeighted chooseAddWeighted() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return addWeightedByAvx2;
    }
#endif
    return addWeightedPlainly;
}

} // namespace

AveragedParts::AveragedParts(std::size_t from, std::size_t to, int sum) {
    // The unit of length is 1/`to` of a source pixel, which is 1/`from` of a target pixel.
    firsts.resize(to);
    ends.resize(to);
    for (std::size_t i = 0; i < to; ++i) {
        firsts[i] = static_cast<std::size_t>(std::uint64_t{i} * from / to);
        ends[i] = static_cast<std::size_t>((std::uint64_t{i + 1} * from + to - 1) / to);
        taps = std::max(taps, ends[i] - firsts[i]);
    }
    taps += taps % 2;
    weights.resize(to * taps);
    for (std::size_t i = 0; i < to; ++i) {
        std::int16_t* weight = weights.data() + i * taps;
        std::uint64_t given = 0;
        for (std::size_t old = firsts[i]; old < ends[i]; ++old) {
            // Rounds the running total, so that rounding errors do not accumulate.
            const std::uint64_t end =
                std::min<std::uint64_t>(std::uint64_t{old + 1} * to, std::uint64_t{i + 1} * from);
            const std::uint64_t upTo =
                ((end - std::uint64_t{i} * from) * static_cast<std::uint64_t>(sum) + from / 2) /
                from;
            *weight++ = static_cast<std::int16_t>(upTo - given);
            given = upTo;
        }
    }
}

void addWeightedPlainly(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                        std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] = static_cast<std::uint16_t>(sums[i] + bytes[i] * weight);
    }
}

void addWeighted(const std::uint8_t* bytes, unsigned weight, std::uint16_t* sums,
                 std::size_t count) {
    static const AddWeighted best = chooseAddWeighted();
    best(bytes, weight, sums, count);
}

void averagePixelsPlainly(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                          std::uint32_t* pixels) {
    const std::size_t components = bytesPerPixel(form);
    for (std::size_t i = 0; i < parts.count(); ++i) {
        const std::uint16_t* from = sums + parts.firsts[i] * components + redOffset(form);
        std::array<std::int32_t, 3> colour = {half, half, half};
        for (std::size_t tap = 0; tap < parts.taps; ++tap, from += components) {
            for (std::size_t j = 0; j < colour.size(); ++j) {
                colour[j] += parts.weightsOf(i)[tap] * (from[j] / 2);
            }
        }
        pixels[i] = pixelOf(static_cast<std::uint32_t>(colour[0]) >> valueBits,
                            static_cast<std::uint32_t>(colour[1]) >> valueBits,
                            static_cast<std::uint32_t>(colour[2]) >> valueBits);
    }
}

void averagePixels(const std::uint16_t* sums, PixelForm form, const AveragedParts& parts,
                   std::uint32_t* pixels) {
#if defined(__x86_64__)
    // Every x86-64 processor has SSE2.
    switch (form) {
    case PixelForm::ARGB:
        averagePixelsBySse2<4, 1>(sums, parts, pixels);
        break;
    case PixelForm::RGBA:
        averagePixelsBySse2<4, 0>(sums, parts, pixels);
        break;
    case PixelForm::RGB:
        averagePixelsBySse2<3, 0>(sums, parts, pixels);
        break;
    }
#else
    averagePixelsPlainly(sums, form, parts, pixels);
#endif
}

} // namespace vistrane
