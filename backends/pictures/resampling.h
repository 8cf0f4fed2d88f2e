#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vistrane {

/// For each of a row of new pixels: which old pixels it is made of, and with which weights. The
/// weights of a pixel add up to 1.
class Resampling {
public:
    struct Part {
        std::size_t first = 0;
        std::span<const float> weights;
    };

    /// New pixel i covers the old pixels from `origin` + i * `step` to `origin` + (i + 1) * `step`
    /// (any part of it may lie outside). Old pixels are taken from `low` to `high` only, which
    /// lie in order within 0 and the number of old pixels. `step` > 0; all numbers are finite.
    Resampling(double origin, double step, std::size_t count, double low, double high);

    std::size_t count() const { return pixels_.size(); }
    Part at(std::size_t i) const {
        const Pixel& pixel = pixels_[i];
        return {pixel.first, std::span(weights_).subspan(pixel.offset, pixel.count)};
    }

    /// The old pixels that are used at all: from first to before end.
    std::size_t first() const { return first_; }
    std::size_t end() const { return end_; }

private:
    struct Pixel {
        std::size_t first = 0;
        std::size_t offset = 0;
        std::size_t count = 0;
    };

    void addAverage(double from, double to, double low, double high);
    void addCurve(double middle, double low, double high);
    void finish(std::size_t first, std::size_t offset);

    std::vector<Pixel> pixels_;
    std::vector<float> weights_;
    std::size_t first_ = 0;
    std::size_t end_ = 0;
};

} // namespace vistrane
