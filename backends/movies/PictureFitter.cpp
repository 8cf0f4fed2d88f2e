#include "backends/movies/PictureFitter.h"

#include <algorithm>
#include <cmath>

namespace vistrane {

namespace {

constexpr std::size_t channels = 3;

double catmullRom(double x) {
    x = std::abs(x);
    if (x < 1) {
        return (1.5 * x - 2.5) * x * x + 1;
    }
    return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

/// a * b / c, rounded; the sizes of pictures stay far below the overflow.
std::size_t proportion(std::size_t a, std::size_t b, std::size_t c) {
    const std::uint64_t doubled = 2 * static_cast<std::uint64_t>(a) * b;
    return static_cast<std::size_t>((doubled + c) / (2 * static_cast<std::uint64_t>(c)));
}

} // namespace

FittedArea fittedArea(std::size_t width, std::size_t height, std::size_t frameWidth,
                      std::size_t frameHeight) {
    FittedArea area{0, 0, frameWidth, frameHeight};
    const bool isWider = static_cast<std::uint64_t>(width) * frameHeight >
                         static_cast<std::uint64_t>(frameWidth) * height;
    if (isWider) {
        area.height =
            std::clamp<std::size_t>(proportion(height, frameWidth, width), 1, frameHeight);
    } else {
        area.width = std::clamp<std::size_t>(proportion(width, frameHeight, height), 1, frameWidth);
    }
    area.x = (frameWidth - area.width) / 2;
    area.y = (frameHeight - area.height) / 2;
    return area;
}

PictureView PictureFitter::fit(const PictureView& picture) {
    if (picture.width == frameWidth_ && picture.height == frameHeight_) {
        return picture;
    }
    prepare(picture);
    const std::size_t rowLength = channels * area_.width;
    std::size_t filtered = 0; // source rows before this one are filtered, or were not needed
    for (std::size_t y = 0; y < area_.height; ++y) {
        filtered = std::max(filtered, down_.first[y]);
        for (; filtered < down_.first[y] + down_.taps; ++filtered) {
            filterRow(picture.bytes + filtered * picture.stride,
                      rows_.data() + filtered % down_.taps * rowLength);
        }
        blendRows(y);
    }
    return {frame_.data(), frameWidth_, frameHeight_, 4 * frameWidth_};
}

void PictureFitter::prepare(const PictureView& picture) {
    if (picture.width == width_ && picture.height == height_) {
        return;
    }
    width_ = picture.width;
    height_ = picture.height;
    area_ = fittedArea(width_, height_, frameWidth_, frameHeight_);
    across_ = makeFilter(width_, area_.width);
    down_ = makeFilter(height_, area_.height);
    frame_.assign(4 * frameWidth_ * frameHeight_, 0);
    rows_.resize(down_.taps * channels * area_.width);
    blend_.resize(channels * area_.width);
}

PictureFitter::Filter PictureFitter::makeFilter(std::size_t from, std::size_t to) {
    const double step = static_cast<double>(from) / static_cast<double>(to);
    const double widening = std::max(step, 1.0);
    const auto reach = static_cast<std::ptrdiff_t>(std::ceil(2 * widening));
    const auto last = static_cast<std::ptrdiff_t>(from) - 1;

    Filter filter;
    filter.taps = std::min(static_cast<std::size_t>(2 * reach), from);
    filter.first.resize(to);
    filter.weights.resize(to * filter.taps);
    for (std::size_t i = 0; i < to; ++i) {
        const double center = (static_cast<double>(i) + 0.5) * step - 0.5;
        const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(std::floor(center)) - reach + 1;
        const std::ptrdiff_t first =
            std::clamp<std::ptrdiff_t>(start, 0, static_cast<std::ptrdiff_t>(from - filter.taps));
        float* weights = filter.weights.data() + i * filter.taps;
        double sum = 0;
        for (std::ptrdiff_t j = start; j < start + 2 * reach; ++j) {
            sum += catmullRom((static_cast<double>(j) - center) / widening);
        }
        for (std::ptrdiff_t j = start; j < start + 2 * reach; ++j) {
            const double weight = catmullRom((static_cast<double>(j) - center) / widening) / sum;
            weights[std::clamp<std::ptrdiff_t>(j, 0, last) - first] += static_cast<float>(weight);
        }
        filter.first[i] = static_cast<std::size_t>(first);
    }
    return filter;
}

void PictureFitter::filterRow(const std::uint8_t* pixels, float* row) const {
    for (std::size_t x = 0; x < area_.width; ++x) {
        const std::uint8_t* pixel = pixels + 4 * across_.first[x];
        const float* weights = across_.weights.data() + x * across_.taps;
        float red = 0;
        float green = 0;
        float blue = 0;
        for (std::size_t tap = 0; tap < across_.taps; ++tap, pixel += 4) {
            red += weights[tap] * pixel[1];
            green += weights[tap] * pixel[2];
            blue += weights[tap] * pixel[3];
        }
        row[channels * x] = red;
        row[channels * x + 1] = green;
        row[channels * x + 2] = blue;
    }
}

void PictureFitter::blendRows(std::size_t y) {
    std::fill(blend_.begin(), blend_.end(), 0.5F); // rounds what is cut off below
    for (std::size_t tap = 0; tap < down_.taps; ++tap) {
        const float weight = down_.weights[y * down_.taps + tap];
        const float* row =
            rows_.data() + (down_.first[y] + tap) % down_.taps * channels * area_.width;
        for (std::size_t i = 0; i < blend_.size(); ++i) {
            blend_[i] += weight * row[i];
        }
    }
    std::uint8_t* pixel = frame_.data() + 4 * ((area_.y + y) * frameWidth_ + area_.x);
    for (std::size_t i = 0; i < blend_.size(); i += channels, pixel += 4) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const float value = std::clamp(blend_[i + channel], 0.0F, 255.0F);
            pixel[1 + channel] = static_cast<std::uint8_t>(value);
        }
    }
}

} // namespace vistrane
