#include "backends/pictures/resampling.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistrane {

namespace {

constexpr std::size_t channels = 4;

/// Narrower parts of a pixel are rounding errors.
constexpr double leastCover = 1e-9;

double catmullRom(double distance) {
    const double x = std::abs(distance);
    if (x < 1.0) {
        return (1.5 * x - 2.5) * x * x + 1.0;
    }
    return x < 2.0 ? ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0 : 0.0;
}

/// The source pixel at `position`, clamped to the picture.
std::size_t index(double position, double low, double high) {
    const double last = std::max(std::ceil(high) - 1.0, std::floor(low));
    return static_cast<std::size_t>(std::clamp(std::floor(position), std::floor(low), last));
}

/// Adds a source row with its weight; `sums` begins with pixel `first`.
void addRow(std::vector<float>& sums, const std::uint8_t* row, std::size_t first, float weight) {
    const std::uint8_t* values = row + first * channels;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] += weight * static_cast<float>(values[i]);
    }
}

} // namespace

Resampling::Resampling(double origin, double step, std::size_t count, double low, double high,
                       Shrinking shrinking) {
    pixels_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double from = origin + static_cast<double>(i) * step;
        if (step >= 1.0 && shrinking == Shrinking::ByArea) {
            addAverage(from, from + step, low, high);
        } else {
            addCubic(from + step / 2, std::max(step, 1.0), low, high);
        }
    }
}

void Resampling::addAverage(double from, double to, double low, double high) {
    // Skips parts of a pixel that are only rounding errors.
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

void Resampling::addCubic(double middle, double widening, double low, double high) {
    const double reach = std::ceil(2.0 * widening);
    const double begin = std::floor(middle - 0.5) - reach + 1.0;
    const auto count = static_cast<std::size_t>(2.0 * reach);
    const std::size_t first = index(begin, low, high);
    const std::size_t last = index(begin + 2.0 * reach - 1.0, low, high);
    const std::size_t offset = weights_.size();
    weights_.resize(offset + last - first + 1, 0.0F);
    for (std::size_t i = 0; i < count; ++i) {
        const double position = begin + static_cast<double>(i);
        weights_[offset + index(position, low, high) - first] +=
            static_cast<float>(catmullRom((position + 0.5 - middle) / widening));
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

RowResampler::RowResampler(Resampling columns, Resampling rows)
    : columns_(std::move(columns)), rows_(std::move(rows)),
      sums_((columns_.end() - columns_.first()) * channels), row_(columns_.count() * channels) {}

std::span<const float> RowResampler::row(std::size_t y, const std::uint8_t* pixels,
                                         std::size_t stride) {
    std::fill(sums_.begin(), sums_.end(), 0.0F);
    const Resampling::Part down = rows_.at(y);
    for (std::size_t i = 0; i < down.weights.size(); ++i) {
        addRow(sums_, pixels + (down.first + i) * stride, columns_.first(), down.weights[i]);
    }
    for (std::size_t x = 0; x < columns_.count(); ++x) {
        const Resampling::Part across = columns_.at(x);
        const float* values = sums_.data() + (across.first - columns_.first()) * channels;
        float pixel[channels] = {};
        for (const float weight : across.weights) {
            for (std::size_t i = 0; i < channels; ++i) {
                pixel[i] += weight * values[i];
            }
            values += channels;
        }
        std::copy_n(pixel, channels, row_.data() + x * channels);
    }
    return row_;
}

} // namespace vistrane
