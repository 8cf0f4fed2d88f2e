#include "backends/movies/color_rows.h"

#include <algorithm>

#include "backends/movies/color_rows_avx2.h"
#include "backends/movies/color_weights.h"

namespace vistrane {

namespace {

/// The sum of a channel over two rows and three columns with the weights 1, 2, 1: eight times the
/// mean.
std::int32_t sumOfEight(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t left,
                        std::size_t middle, std::size_t right) {
    return top[left] + 2 * top[middle] + top[right] + bottom[left] + 2 * bottom[middle] +
           bottom[right];
}

void convertChromaRow(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                      std::uint8_t* blueDifference, std::uint8_t* redDifference) {
    convertChromaPlainly(top, bottom, width, 0, width, blueDifference, redDifference);
}

} // namespace

void convertLumaPlainly(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t* pixel = pixels + 4 * x;
        luma[x] = static_cast<std::uint8_t>(
            (lumaWeights.sum(pixel[1], pixel[2], pixel[3]) + lumaOffset) >> fractionBits);
    }
}

void convertChromaPlainly(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                          std::size_t from, std::size_t to, std::uint8_t* blueDifference,
                          std::uint8_t* redDifference) {
    // Sample i is over pixel 2 i.
    const auto convert = [=](std::size_t i, std::size_t left, std::size_t right) {
        const std::size_t middle = 8 * i;
        const std::int32_t red = sumOfEight(top + 1, bottom + 1, left, middle, right);
        const std::int32_t green = sumOfEight(top + 2, bottom + 2, left, middle, right);
        const std::int32_t blue = sumOfEight(top + 3, bottom + 3, left, middle, right);
        blueDifference[i] = static_cast<std::uint8_t>(
            (blueWeights.sum(red, green, blue) + chromaOffset) >> chromaBits);
        redDifference[i] = static_cast<std::uint8_t>(
            (redWeights.sum(red, green, blue) + chromaOffset) >> chromaBits);
    };
    const std::size_t last = 4 * (width - 1);
    const std::size_t count = (to + 1) / 2;
    std::size_t i = (from + 1) / 2;
    if (i == 0 && count > 0) {
        convert(0, 0, std::min<std::size_t>(4, last));
        ++i;
    }
    // Without the edges, so that compilers vectorise it.
    for (const std::size_t end = std::min(count, width / 2); i < end; ++i) {
        convert(i, 8 * i - 4, 8 * i + 4);
    }
    if (i < count) {
        convert(i, 8 * i - 4, last);
    }
}

RowConversion plainRowConversion() {
    return {convertLumaPlainly, convertChromaRow};
}

const RowConversion& fastestRowConversion() {
    static const RowConversion fastest = avx2RowConversion().value_or(plainRowConversion());
    return fastest;
}

} // namespace vistrane
