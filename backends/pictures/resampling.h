#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vistrane {

/// The filter for scaling down. Scaling up always uses the Catmull-Rom cubic (Keys 1981, a = -1/2).
enum class Shrinking {
    /// The average of the source area of each target pixel.
    ByArea,
    /// The cubic, widened by the scale, so that fine detail does not alias.
    ByCubic,
};

/// The source pixels of each target pixel of a row or column, with their weights, which add up to
/// 1.
class Resampling {
public:
    struct Part {
        std::size_t first = 0;
        std::span<const float> weights;
    };

    /// Target pixel i covers the source from `origin` + i * `step` to `origin` + (i + 1) * `step`,
    /// which may lie outside in part. Only source pixels from `low` to `high` are used; beyond
    /// these edges the cubic repeats the outermost pixel. `low` <= `high`, both from 0 to the
    /// number of source pixels. `step` > 0. All numbers are finite.
    Resampling(double origin, double step, std::size_t count, double low, double high,
               Shrinking shrinking);

    std::size_t count() const { return pixels_.size(); }
    Part at(std::size_t i) const {
        const Pixel& pixel = pixels_[i];
        return {pixel.first, std::span(weights_).subspan(pixel.offset, pixel.count)};
    }

    /// The range of source pixels that are used, excluding `end`.
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

/// Rounds and clamps to the range of a byte. `value` is in the range of an `int`. Clamps after the
/// conversion to an integer, because compilers do not vectorise clamping of floating-point numbers.
inline std::uint8_t nearestByte(float value) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): negative values become 0
    const int nearest = static_cast<int>(value + 0.5F);
    return static_cast<std::uint8_t>(std::clamp(nearest, 0, 255));
}

/// Resamples pictures of 4-byte pixels, treating all four bytes the same, in one pass over the
/// target rows. One thread at a time.
class RowResampler {
public:
    RowResampler(Resampling columns, Resampling rows);

    std::size_t width() const { return columns_.count(); }
    std::size_t height() const { return rows_.count(); }

    /// Target row `y`, neither rounded nor clamped: the cubic may overshoot 0 and 255. Four numbers
    /// per pixel, valid until the next call. The source picture's top row is at `pixels`, with a
    /// row stride of `stride` bytes.
    std::span<const float> row(std::size_t y, const std::uint8_t* pixels, std::size_t stride);

private:
    Resampling columns_;
    Resampling rows_;
    std::vector<float> sums_;
    std::vector<float> row_;
};

} // namespace vistrane
