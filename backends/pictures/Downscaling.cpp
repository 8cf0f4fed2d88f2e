#include "backends/pictures/Downscaling.h"

#include <algorithm>

namespace vistrane {

Downscaling::Downscaling(const PictureShape& shape, PixelForm form, std::size_t width,
                         std::size_t height, std::uint32_t* pixels, std::ptrdiff_t stride)
    : form_(form), length_(bytesPerPixel(form) * shape.width), height_(height),
      across_(shape.width, width, pixelWeights), down_(shape.height, height, rowWeights),
      pixels_(pixels), stride_(stride), sums_(length_ + (across_.taps + 1) * bytesPerPixel(form)) {}

void Downscaling::begin() {
    oldRow_ = 0;
    newRow_ = 0;
    std::fill(sums_.begin(), sums_.end(), std::uint16_t{0});
}

void Downscaling::take(const std::uint8_t* row) {
    // A source row may contribute to two target rows.
    while (newRow_ < height_ && down_.firsts[newRow_] <= oldRow_) {
        const std::size_t tap = oldRow_ - down_.firsts[newRow_];
        addWeighted(row, static_cast<unsigned>(down_.weightsOf(newRow_)[tap]), sums_.data(),
                    length_);
        if (oldRow_ + 1 < down_.ends[newRow_]) {
            break;
        }
        finishRow();
    }
    ++oldRow_;
}

void Downscaling::finishRow() {
    averagePixels(sums_.data(), form_, across_,
                  reinterpret_cast<std::uint32_t*>(reinterpret_cast<std::uint8_t*>(pixels_) +
                                                   static_cast<std::ptrdiff_t>(newRow_) * stride_));
    std::fill(sums_.begin(), sums_.end(), std::uint16_t{0});
    ++newRow_;
}

} // namespace vistrane
