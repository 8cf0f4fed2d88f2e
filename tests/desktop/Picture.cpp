#include "tests/desktop/Picture.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <png.h>

namespace vistrane {

Colour Picture::at(int x, int y) const {
    const std::size_t first = 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(x));
    return {rgb.at(first), rgb.at(first + 1), rgb.at(first + 2)};
}

Colour Picture::mean() const {
    std::array<std::uint64_t, 3> sums{};
    for (std::size_t index = 0; index < rgb.size(); ++index) {
        sums[index % 3] += rgb[index];
    }
    const std::uint64_t pixels = std::max<std::uint64_t>(rgb.size() / 3, 1);
    return {static_cast<int>(sums[0] / pixels), static_cast<int>(sums[1] / pixels),
            static_cast<int>(sums[2] / pixels)};
}

void writePng(const Picture& picture, const std::string& path) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;
    if (png_image_write_to_file(&image, path.c_str(), 0, picture.rgb.data(), 0, nullptr) == 0) {
        throw std::runtime_error(path + ": " + image.message);
    }
}

} // namespace vistrane
