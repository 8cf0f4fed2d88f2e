#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "backends/pictures/Downscaling.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane::testing {

/// An opaque picture that counts how often it is decoded.
class CountedPicture final : public PictureSource {
public:
    static constexpr std::uint32_t width = 40;
    static constexpr std::uint32_t height = 30;

    explicit CountedPicture(bool isDamaged = false)
        : PictureSource({width, height, {}, false}, "counted"), isDamaged_(isDamaged) {}

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override {
        ++decoded;
        if (whileDecoding) {
            whileDecoding();
        }
        for (std::uint32_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width * bytesPerPixel(form); ++x) {
                rows[static_cast<std::ptrdiff_t>(y) * stride + static_cast<std::ptrdiff_t>(x)] =
                    static_cast<std::uint8_t>(7 * y + x / bytesPerPixel(form));
            }
        }
        return isDamaged_ ? std::optional(NSError{"test", 1, "damaged"}) : std::nullopt;
    }

    /// What a view must get.
    std::vector<std::uint32_t> smaller(std::size_t newWidth, std::size_t newHeight) const {
        const CountedPicture fresh;
        std::vector<std::uint32_t> pixels(newWidth * newHeight);
        fresh.readSmaller(newWidth, newHeight, pixels.data(),
                          static_cast<std::ptrdiff_t>(4 * newWidth));
        return pixels;
    }

    mutable std::atomic<int> decoded{0};
    std::function<void()> whileDecoding;

private:
    bool isDamaged_;
};

} // namespace vistrane::testing
