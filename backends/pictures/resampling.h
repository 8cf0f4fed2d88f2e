#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vistrane {

/// How a picture is made smaller. Larger ones are always made with the Catmull-Rom cubic (Keys
/// 1981, a = -1/2).
enum class Shrinking {
    /// The average of the area that falls on a new pixel.
    ByArea,
    /// The cubic, widened by the ratio, so that fine detail does not alias.
    ByCubic,
};

/// Which pixels of an old row, or column, each pixel of a new one is made of, and with which
/// weights. The weights of a new pixel add up to 1.
class Resampling {
public:
    struct Part {
        std::size_t first = 0;
        std::span<const float> weights;
    };

    /// New pixel i covers the old pixels from `origin` + i * `step` to `origin` + (i + 1) * `step`,
    /// any part of which may lie outside. Old pixels are taken from `low` to `high` only; beyond
    /// these edges the cubic repeats the outermost pixel. `low` <= `high`, both from 0 to the
    /// number of old pixels. `step` > 0. All numbers are finite.
    Resampling(double origin, double step, std::size_t count, double low, double high,
               Shrinking shrinking);

    std::size_t count() const { return pixels_.size(); }
    Part at(std::size_t i) const {
        const Pixel& pixel = pixels_[i];
        return {pixel.first, std::span(weights_).subspan(pixel.offset, pixel.count)};
    }

    /// The range of old pixels that are used at all: `end` is not among them.
    std::size_t first() const { return first_; }
    std::size_t end() const { return end_; }

private:
    struct Pixel {
        std::size_t first = 0;
        std::size_t offset = 0;
        std::size_t count = 0;
    };

    void addAverage(double from, double to, double low, double high);
    void addCubic(double middle, double widening, double low, double high);
    void finish(std::size_t first, std::size_t offset);

    std::vector<Pixel> pixels_;
    std::vector<float> weights_;
    std::size_t first_ = 0;
    std::size_t end_ = 0;
};

/// The nearest value of a byte. `value` is of an `int`'s range. Clamps integers, because compilers
/// do not vectorise the clamping of floating-point numbers.
inline std::uint8_t nearestByte(float value) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): negative values become 0
    const int nearest = static_cast<int>(value + 0.5F);
    return static_cast<std::uint8_t>(std::clamp(nearest, 0, 255));
}

/// Resamples pictures of 4-byte pixels, all four bytes alike, in one pass over the new rows. One
/// thread at a time.
class RowResampler {
public:
    RowResampler(Resampling columns, Resampling rows);

    std::size_t width() const { return columns_.count(); }
    std::size_t height() const { return rows_.count(); }

    /// New row `y`, not rounded and not clamped: the cubic overshoots 0 and 255. Four numbers a
    /// pixel, valid until the next call. The old picture's top row is at `pixels`, its rows are
    /// `stride` bytes apart.
    std::span<const float> row(std::size_t y, const std::uint8_t* pixels, std::size_t stride);

private:
    Resampling columns_;
    Resampling rows_;
    std::vector<float> sums_;
    std::vector<float> row_;
};

} // namespace vistrane
