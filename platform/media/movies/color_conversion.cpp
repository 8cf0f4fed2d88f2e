#include "platform/media/movies/color_conversion.h"

#include <algorithm>

namespace vistrane {

namespace {

// ITU-R BT.709-6, item 3.2: Y' = 0.2126 R' + 0.7152 G' + 0.0722 B', Cb = (B' - Y') / 1.8556,
// Cr = (R' - Y') / 1.5748; item 3.4 gives the limited range: 219 steps of luma, 224 of chroma.
constexpr int fractionBits = 16;
constexpr double redShare = 0.2126;
constexpr double greenShare = 0.7152;
constexpr double blueShare = 0.0722;
constexpr double lumaScale = 219.0 / 255.0;
constexpr double chromaScale = 224.0 / 255.0;

constexpr std::int32_t fixed(double value) {
    const double scaled = value * (1 << fractionBits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

struct Weights {
    std::int32_t red;
    std::int32_t green;
    std::int32_t blue;
};

constexpr Weights lumaWeights{fixed(redShare * lumaScale), fixed(greenShare* lumaScale),
                              fixed(blueShare* lumaScale)};

// The green weights follow from the others, so that every grey gives exactly 128.
constexpr std::int32_t blueFromRed = fixed(-redShare / 1.8556 * chromaScale);
constexpr std::int32_t blueFromBlue = fixed((1 - blueShare) / 1.8556 * chromaScale);
constexpr Weights blueWeights{blueFromRed, -blueFromRed - blueFromBlue, blueFromBlue};
constexpr std::int32_t redFromRed = fixed((1 - redShare) / 1.5748 * chromaScale);
constexpr std::int32_t redFromBlue = fixed(-blueShare / 1.5748 * chromaScale);
constexpr Weights redWeights{redFromRed, -redFromRed - redFromBlue, redFromBlue};

constexpr std::int32_t weigh(const Weights& weights, std::int32_t red, std::int32_t green,
                             std::int32_t blue) {
    return weights.red * red + weights.green * green + weights.blue * blue;
}

static_assert((weigh(lumaWeights, 255, 255, 255) + (1 << (fractionBits - 1))) >> fractionBits ==
              219);

void convertLumaRow(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma) {
    constexpr std::int32_t offset = (16 << fractionBits) + (1 << (fractionBits - 1));
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t* pixel = pixels + 4 * x;
        luma[x] = static_cast<std::uint8_t>(
            (weigh(lumaWeights, pixel[1], pixel[2], pixel[3]) + offset) >> fractionBits);
    }
}

/// The sum of a channel with a weight of eight: two rows, and columns weighted 1, 2, 1.
std::int32_t sumOfEight(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t left,
                        std::size_t middle, std::size_t right) {
    return top[left] + 2 * top[middle] + top[right] + bottom[left] + 2 * bottom[middle] +
           bottom[right];
}

void convertChromaRow(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                      std::uint8_t* blueDifference, std::uint8_t* redDifference) {
    constexpr int shift = fractionBits + 3; // the sums are eightfold
    constexpr std::int32_t offset = (128 << shift) + (1 << (shift - 1));
    for (std::size_t x = 0; x < width; x += 2) {
        const std::size_t left = 4 * (x == 0 ? 0 : x - 1);
        const std::size_t middle = 4 * x;
        const std::size_t right = 4 * std::min(x + 1, width - 1);
        const std::int32_t red = sumOfEight(top + 1, bottom + 1, left, middle, right);
        const std::int32_t green = sumOfEight(top + 2, bottom + 2, left, middle, right);
        const std::int32_t blue = sumOfEight(top + 3, bottom + 3, left, middle, right);
        blueDifference[x / 2] =
            static_cast<std::uint8_t>((weigh(blueWeights, red, green, blue) + offset) >> shift);
        redDifference[x / 2] =
            static_cast<std::uint8_t>((weigh(redWeights, red, green, blue) + offset) >> shift);
    }
}

} // namespace

void convertToPlanar709(const PictureView& picture, const PlanarPicture& target) {
    for (std::size_t y = 0; y < target.height; y += 2) {
        const std::uint8_t* top = picture.bytes + y * picture.stride;
        const std::uint8_t* bottom = y + 1 < picture.height ? top + picture.stride : top;
        std::uint8_t* luma = target.luma + y * target.lumaStride;
        convertLumaRow(top, picture.width, luma);
        convertLumaRow(bottom, picture.width, luma + target.lumaStride);
        if (target.width > picture.width) {
            luma[picture.width] = luma[picture.width - 1];
            luma[target.lumaStride + picture.width] = luma[target.lumaStride + picture.width - 1];
        }
        const std::size_t chromaStart = y / 2 * target.chromaStride;
        convertChromaRow(top, bottom, picture.width, target.blueDifference + chromaStart,
                         target.redDifference + chromaStart);
    }
}

} // namespace vistrane
