#include "backends/movies/PictureFitter.h"

#include <algorithm>

namespace vistrane {

namespace {

/// a * b / c, rounded. Picture sizes are far too small to overflow.
std::size_t proportion(std::size_t a, std::size_t b, std::size_t c) {
    const std::uint64_t doubled = 2 * static_cast<std::uint64_t>(a) * b;
    return static_cast<std::size_t>((doubled + c) / (2 * static_cast<std::uint64_t>(c)));
}

Resampling resampling(std::size_t from, std::size_t to) {
    const double step = static_cast<double>(from) / static_cast<double>(to);
    return Resampling(0.0, step, to, 0.0, static_cast<double>(from), Shrinking::ByCubic);
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
    for (std::size_t y = 0; y < area_.height; ++y) {
        std::uint8_t* to = frame_.data() + 4 * ((area_.y + y) * frameWidth_ + area_.x);
        const std::span<const float> row = resampler_->row(y, picture.bytes, picture.stride);
        std::transform(row.begin(), row.end(), to, nearestByte);
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
    resampler_.emplace(resampling(width_, area_.width), resampling(height_, area_.height));
    frame_.assign(4 * frameWidth_ * frameHeight_, 0);
}

} // namespace vistrane
