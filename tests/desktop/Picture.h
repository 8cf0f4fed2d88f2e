#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vistrane {

/// In pixels from the screen's upper left corner.
struct Rectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Rectangle&) const = default;

    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    Rectangle within(const Rectangle& other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        return {left, top, std::min(right(), other.right()) - left,
                std::min(bottom(), other.bottom()) - top};
    }
};

using Colour = std::array<int, 3>;

/// What was to be seen on the screen.
struct Picture {
    int width = 0;
    int height = 0;
    /// Rows from top to bottom: red, green, blue.
    std::vector<std::uint8_t> rgb;

    bool operator==(const Picture&) const = default;

    Colour at(int x, int y) const;
    /// Of all pixels.
    Colour mean() const;
};

void writePng(const Picture& picture, const std::string& path);

} // namespace vistrane
