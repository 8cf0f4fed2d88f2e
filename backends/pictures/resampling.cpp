#include "backends/pictures/resampling.h"

#include <algorithm>
#include <cmath>

namespace vistrane {

namespace {

/// Narrower strips of a pixel are rounding errors.
constexpr double leastCover = 1e-9;

/// The curve of Catmull and Rom: the cubic convolution with a = -1/2, `distance` in old pixels.
double curve(double distance) {
    const double x = std::abs(distance);
    if (x < 1.0) {
        return (1.5 * x - 2.5) * x * x + 1.0;
    }
    return x < 2.0 ? ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0 : 0.0;
}

std::size_t index(double position, double low, double high) {
    const double last = std::max(std::ceil(high) - 1.0, std::floor(low));
    return static_cast<std::size_t>(std::clamp(std::floor(position), std::floor(low), last));
}

} // namespace

Resampling::Resampling(double origin, double step, std::size_t count, double low, double high) {
    pixels_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double from = origin + static_cast<double>(i) * step;
        if (step >= 1.0) {
            addAverage(from, from + step, low, high);
        } else {
            addCurve(from + step / 2, low, high);
        }
    }
}

void Resampling::addAverage(double from, double to, double low, double high) {
    // What rounding leaves of the pixel before is not the first one.
    const double nearest = std::round(from);
    const double start =
        std::clamp(std::abs(nearest - from) < leastCover ? nearest : from, low, high);
    const double end = std::clamp(to, low, high);
    const std::size_t first = index(start, low, high);
    const std::size_t offset = weights_.size();
    for (std::size_t old = first; static_cast<double>(old) < end; ++old) {
        const double cover = std::min(end, static_cast<double>(old) + 1.0) -
                             std::max(start, static_cast<double>(old));
        if (cover < leastCover) {
            break;
        }
        weights_.push_back(static_cast<float>(cover));
    }
    finish(first, offset);
}

void Resampling::addCurve(double middle, double low, double high) {
    const double before = std::floor(middle - 0.5) - 1.0;
    const std::size_t first = index(before, low, high);
    const std::size_t last = index(before + 3.0, low, high);
    const std::size_t offset = weights_.size();
    weights_.resize(offset + last - first + 1, 0.0F);
    // Beyond the edge the edge's own pixel goes on.
    for (int tap = 0; tap < 4; ++tap) {
        const double position = before + tap;
        weights_[offset + index(position, low, high) - first] +=
            static_cast<float>(curve(position + 0.5 - middle));
    }
    finish(first, offset);
}

void Resampling::finish(std::size_t first, std::size_t offset) {
    float sum = 0.0F;
    for (std::size_t i = offset; i < weights_.size(); ++i) {
        sum += weights_[i];
    }
    if (weights_.size() == offset || sum <= 0.0F) {
        weights_.resize(offset);
        weights_.push_back(1.0F);
        sum = 1.0F;
    }
    for (std::size_t i = offset; i < weights_.size(); ++i) {
        weights_[i] /= sum;
    }
    const std::size_t count = weights_.size() - offset;
    first_ = pixels_.empty() ? first : std::min(first_, first);
    end_ = std::max(end_, first + count);
    pixels_.push_back({first, offset, count});
}

} // namespace vistrane
