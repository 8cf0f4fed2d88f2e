#include "bench/SamplePictures.h"

#include <algorithm>
#include <cmath>

namespace vistrane::bench {

namespace {

/// A random number generator: fast, and the same on every system.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed * 2 + 1) {}

    std::uint32_t next() {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>(state_ >> 33);
    }

    int below(int limit) { return static_cast<int>(next() % static_cast<std::uint32_t>(limit)); }

    /// Approximately normal, with a standard deviation of about 3.2.
    int sensorNoise() {
        const std::uint32_t bits = next();
        const int sum = static_cast<int>((bits & 7U) + (bits >> 3 & 7U));
        return sum - 7;
    }

private:
    std::uint64_t state_;
};

std::uint8_t clamped(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

void put(SamplePicture& picture, std::uint32_t x, std::uint32_t y, int red, int green, int blue) {
    std::uint8_t* pixel = &picture.rgb[(std::size_t{y} * picture.width + x) * 3];
    pixel[0] = clamped(red);
    pixel[1] = clamped(green);
    pixel[2] = clamped(blue);
}

void drawGradient(SamplePicture& picture, unsigned frame) {
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            put(picture, x, y, static_cast<int>(x * 255 / picture.width),
                static_cast<int>(y * 255 / picture.height),
                static_cast<int>((x + y + frame * 4) * 255 / (picture.width + picture.height)));
        }
    }
}

/// A sky and a ground with waves of light, and sensor noise.
void drawScene(SamplePicture& picture, unsigned frame) {
    Random random(frame + 1);
    const double horizon = picture.height * 0.55;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            const double across = static_cast<double>(x + frame * 8) / picture.width * 12.0;
            const double down = static_cast<double>(y) / picture.height;
            const double wave = std::sin(across) * std::cos(down * 9.0);
            const int light =
                static_cast<int>((y < horizon ? 150 + 60 * down : 60 + 40 * down) + 30 * wave);
            put(picture, x, y, light + 10 + random.sensorNoise(), light + random.sensorNoise(),
                light + (y < horizon ? 40 : -20) + random.sensorNoise());
        }
    }
}

void fill(SamplePicture& picture, int left, int top, int width, int height, std::uint32_t colour) {
    const int right = std::min(left + width, static_cast<int>(picture.width));
    const int bottom = std::min(top + height, static_cast<int>(picture.height));
    for (int y = std::max(top, 0); y < bottom; ++y) {
        for (int x = std::max(left, 0); x < right; ++x) {
            put(picture, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                static_cast<int>(colour >> 16 & 255U), static_cast<int>(colour >> 8 & 255U),
                static_cast<int>(colour & 255U));
        }
    }
}

/// Lines of letters: 26 patterns of 5 x 7 dots.
void drawText(SamplePicture& picture, int left, int top, int width, int height, Random& random) {
    for (int y = top; y + 14 <= top + height; y += 18) {
        for (int x = left; x + 10 <= left + width * (60 + random.below(40)) / 100; x += 10) {
            const int letter = random.below(30);
            Random dots(static_cast<std::uint64_t>(letter) + 100);
            for (int dot = 0; dot < 35 && letter < 26; ++dot) {
                if (dots.below(5) < 2) {
                    fill(picture, x + dot % 5, y + dot / 5, 1, 1, 0x202428);
                    fill(picture, x + dot % 5 + 1, y + dot / 5, 1, 1, 0x8A8E90);
                }
            }
        }
    }
}

void drawScreen(SamplePicture& picture, unsigned frame) {
    Random random(7);
    const int width = static_cast<int>(picture.width);
    const int height = static_cast<int>(picture.height);
    fill(picture, 0, 0, width, height, 0x2E5E8E);
    fill(picture, 0, 0, width, 28, 0x303030);
    for (int i = 0; i < 6; ++i) {
        const int left = random.below(width * 3 / 4) + static_cast<int>(frame);
        const int top = 30 + random.below(height * 2 / 3);
        const int w = width / 4 + random.below(width / 4);
        const int h = height / 4 + random.below(height / 4);
        fill(picture, left - 1, top - 1, w + 2, h + 2, 0x808080);
        fill(picture, left, top, w, 26, 0xDADADA);
        fill(picture, left, top + 26, w, h - 26, 0xFCFCFC);
        drawText(picture, left + 8, top + 36, w - 16, h - 44, random);
    }
}

} // namespace

SamplePicture samplePicture(const std::string& kind, std::uint32_t width, std::uint32_t height,
                            unsigned frame) {
    SamplePicture picture{kind, width, height,
                          std::vector<std::uint8_t>(std::size_t{width} * height * 3, 0x60)};
    if (kind == "noise") {
        drawScene(picture, frame);
    } else if (kind == "gradient") {
        drawGradient(picture, frame);
    } else if (kind == "screen") {
        drawScreen(picture, frame);
    }
    return picture;
}

} // namespace vistrane::bench
