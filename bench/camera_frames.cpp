// Writes generated time-lapse frames: camera_frames FOLDER COUNT WIDTH HEIGHT [ours|libpng]
//
// They show a motionless ground with detail of every size, drifting clouds, slowly changing light,
// and sensor noise. They are the same on every machine. The PNG files are written by this program's
// own encoder or by libpng with its defaults.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <png.h>
#include <string>
#include <string_view>
#include <vector>

#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_encoding.h"

namespace vistrane {
namespace {

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

    std::uint64_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }

private:
    std::uint64_t state_;
};

/// Smooth noise of several octaves, from 0 to 1, with the period `side` in both directions.
class Texture {
public:
    Texture(std::size_t octaves, double decay, std::uint64_t seed) : values_(side * side) {
        double weight = 1;
        double total = 0;
        std::vector<float> coarse;
        for (std::size_t octave = 0; octave < octaves; ++octave, weight *= decay) {
            const std::size_t cells = std::size_t{4} << octave;
            coarse.resize(cells * cells);
            Random random(seed * 100 + octave);
            for (float& value : coarse) {
                value = static_cast<float>(random.next() >> 40) / (1 << 24);
            }
            addOctave(coarse, cells, static_cast<float>(weight));
            total += weight;
        }
        for (float& value : values_) {
            value /= static_cast<float>(total);
        }
    }

    float at(double x, double y) const {
        const auto column = static_cast<std::int64_t>(std::floor(x));
        const auto row = static_cast<std::int64_t>(std::floor(y));
        const auto dx = static_cast<float>(x - static_cast<double>(column));
        const auto dy = static_cast<float>(y - static_cast<double>(row));
        const float top = texel(column, row) * (1 - dx) + texel(column + 1, row) * dx;
        const float bottom = texel(column, row + 1) * (1 - dx) + texel(column + 1, row + 1) * dx;
        return top * (1 - dy) + bottom * dy;
    }

private:
    static constexpr std::size_t side = 1024;

    float texel(std::int64_t column, std::int64_t row) const {
        return values_[static_cast<std::size_t>(row) % side * side +
                       static_cast<std::size_t>(column) % side];
    }

    void addOctave(const std::vector<float>& coarse, std::size_t cells, float weight) {
        for (std::size_t y = 0; y < side; ++y) {
            for (std::size_t x = 0; x < side; ++x) {
                const std::size_t cell = side / cells;
                const float dx = smooth(static_cast<float>(x % cell) / static_cast<float>(cell));
                const float dy = smooth(static_cast<float>(y % cell) / static_cast<float>(cell));
                const std::size_t left = x / cell;
                const std::size_t right = (left + 1) % cells;
                const std::size_t top = y / cell;
                const std::size_t bottom = (top + 1) % cells;
                const float upper =
                    coarse[top * cells + left] * (1 - dx) + coarse[top * cells + right] * dx;
                const float lower =
                    coarse[bottom * cells + left] * (1 - dx) + coarse[bottom * cells + right] * dx;
                values_[y * side + x] += weight * (upper * (1 - dy) + lower * dy);
            }
        }
    }

    static float smooth(float t) { return t * t * (3 - 2 * t); }

    std::vector<float> values_;
};

/// The scene without noise. Lengths are in units of the height, so it looks the same in every size.
class Scene {
public:
    std::array<float, 3> color(double x, double y, std::size_t index) const {
        const double time = static_cast<double>(index);
        const float light = 0.9F + 0.1F * static_cast<float>(std::sin(time / 60));
        const double horizon = 0.55 + 0.04 * std::sin(3 * x);
        if (y < horizon) {
            const float cloud = std::clamp(
                3 * clouds_.at(500 * x + 1.7 * time, 500 * y + 0.3 * time) - 1.2F, 0.0F, 1.0F);
            const auto height = static_cast<float>(y / horizon);
            return {light * (70 + 60 * height + cloud * 110),
                    light * (120 + 50 * height + cloud * 70),
                    light * (200 + 20 * height + cloud * 20)};
        }
        if (const auto passer = passerBy(x, y, time)) {
            return *passer;
        }
        // Gusts of wind sway grass and turn leaves over.
        const float wind = clouds_.at(400 * x + 37 * time, 400 * y + 11 * time) - 0.5F;
        const double sway = 12 * static_cast<double>(wind) * (y - horizon + 0.05);
        const float ground = contrast(ground_.at(1000 * x + sway, 1000 * y), 3);
        const float turned = std::clamp(0.5F + 3 * wind, 0.0F, 1.0F);
        const float leaves =
            contrast((1 - turned) * leaves_.at(1080 * x + 2 * sway, 1080 * y + sway) +
                         turned * leaves_.at(1080 * y - sway, 1080 * x + sway),
                     4.5F);
        return {light * (10 + 130 * ground + 60 * leaves),
                light * (20 + 120 * ground + 90 * leaves),
                light * (5 + 110 * ground + 20 * leaves)};
    }

private:
    /// Rows of cars and people of different colours and speeds, with windows and folds.
    std::optional<std::array<float, 3>> passerBy(double x, double y, double time) const {
        for (std::size_t lane = 0; lane < 6; ++lane) {
            const auto number = static_cast<double>(lane);
            const double speed = (lane % 2 == 0 ? 1 : -1) * (0.004 + 0.003 * number);
            const double along = x + speed * time + 0.37 * number;
            const double size = 0.018 + 0.007 * number;
            const double across = (y - 0.62 - 0.06 * number) / size;
            const double place = along / (5 * size);
            const double offset = (place - std::floor(place)) * 5 - 2;
            if (std::abs(across) > 1 || std::abs(offset) > 1 + 0.5 * across) {
                continue;
            }
            const auto kind = static_cast<float>(std::abs(
                                  static_cast<std::int64_t>(std::floor(place)) * 37 % 11)) /
                              11;
            const float fold = leaves_.at(1000 * along, 1000 * y);
            const bool isWindow = across < -0.2 && std::abs(offset) < 0.6;
            const float shade = isWindow ? 0.25F + 0.2F * fold : 0.7F + 0.6F * fold;
            return std::array<float, 3>{shade * (60 + 150 * kind), shade * (200 - 120 * kind),
                                        shade * (90 + 80 * kind)};
        }
        return std::nullopt;
    }

    static float contrast(float value, float factor) {
        return std::clamp(0.5F + factor * (value - 0.5F), 0.0F, 1.0F);
    }

    Texture clouds_{6, 0.62, 1};
    Texture ground_{8, 0.75, 2};
    Texture leaves_{9, 1.25, 3};
};

/// Adds sensor noise: more of it in bright areas, and correlated between neighbouring pixels,
/// because two of three values are interpolated.
class Sensor {
public:
    explicit Sensor(std::uint64_t seed) : random_(seed) {}

    std::uint8_t read(float value, float& neighbour) {
        const std::uint64_t bits = random_.next();
        int sum = 0;
        for (int shift = 0; shift < 64; shift += 8) {
            sum += static_cast<int>(bits >> shift & 0xFF);
        }
        // The sum of eight random bytes: mean 1020, standard deviation 209.
        const float own = static_cast<float>(sum - 1020) / 209;
        const float mixed = 0.8F * own + 0.6F * neighbour;
        neighbour = own;
        const float deviation = 0.5F + 0.08F * std::sqrt(std::max(value, 0.0F));
        return static_cast<std::uint8_t>(
            std::clamp(value + deviation * mixed + 0.5F, 0.0F, 255.0F));
    }

private:
    Random random_;
};

std::vector<std::uint8_t> photograph(const Scene& scene, std::size_t index, std::size_t width,
                                     std::size_t height) {
    std::vector<std::uint8_t> pixels;
    pixels.reserve(3 * width * height);
    Sensor sensor(index + 1);
    for (std::size_t y = 0; y < height; ++y) {
        std::array<float, 3> neighbours{};
        for (std::size_t x = 0; x < width; ++x) {
            const auto color =
                scene.color(static_cast<double>(x) / static_cast<double>(height),
                            static_cast<double>(y) / static_cast<double>(height), index);
            for (std::size_t channel = 0; channel < 3; ++channel) {
                pixels.push_back(sensor.read(color[channel], neighbours[channel]));
            }
        }
    }
    return pixels;
}

bool writeFile(const std::string& path, const void* bytes, std::size_t count) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                               std::fclose);
    return file && std::fwrite(bytes, 1, count, file.get()) == count;
}

bool writeOurs(const std::string& path, const std::vector<std::uint8_t>& pixels, std::size_t width,
               std::size_t height) {
    auto copy = ByteArray::copyOf(pixels);
    if (!copy) {
        return false;
    }
    const PictureShape shape{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                             std::nullopt, false};
    const auto png = encodePng(DecodedPicture(shape, path, std::move(*copy)));
    return png && writeFile(path, png->bytes().data(), png->bytes().size());
}

bool writeByLibpng(const std::string& path, const std::vector<std::uint8_t>& pixels,
                   std::size_t width, std::size_t height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr) != 0;
}

int run(int count, char** values) {
    if (count < 5) {
        std::fputs("camera_frames FOLDER COUNT WIDTH HEIGHT [ours|libpng]\n", stderr);
        return 64;
    }
    const std::string folder = values[1];
    const std::size_t frames = std::strtoul(values[2], nullptr, 10);
    const std::size_t width = std::strtoul(values[3], nullptr, 10);
    const std::size_t height = std::strtoul(values[4], nullptr, 10);
    const bool isByLibpng = count > 5 && std::string_view(values[5]) == "libpng";
    const Scene scene;
    for (std::size_t i = 0; i < frames; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "/%06zu.png", i);
        const auto pixels = photograph(scene, i, width, height);
        const bool isWritten = isByLibpng ? writeByLibpng(folder + name, pixels, width, height)
                                          : writeOurs(folder + name, pixels, width, height);
        if (!isWritten) {
            std::fprintf(stderr, "camera_frames: cannot write %s%s\n", folder.c_str(), name);
            return 1;
        }
    }
    return 0;
}

} // namespace
} // namespace vistrane

int main(int count, char** values) {
    return vistrane::run(count, values);
}
