#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace vistrane {

/// The form of a PNG file to write. All pixels have the same colour.
struct FrameForm {
    int width = 64;
    int height = 48;
    /// Grey kinds use the first component only.
    std::array<int, 3> colour = {128, 128, 128};
    int alpha = 255;

    enum class Kind { grey, greyAlpha, palette, rgb, rgba };
    Kind kind = Kind::rgb;
    /// 1, 2, 4, 8 or 16, as the kind allows.
    int bitDepth = 8;
    bool isInterlaced = false;
    /// Dots per inch. 0: not stated in the file.
    int density = 0;
    /// Random bytes instead of the colour. They cannot be compressed.
    bool isNoise = false;
};

void writeFrame(const std::string& path, const FrameForm& form = {});

/// A grey frame of 64 x 48.
void writeGreyFrame(const std::string& path, int grey);

/// Returns a valid PNG file's bytes after damaging them.
namespace damaged {
std::string truncated(std::string png);
/// With another size in the header, and valid checksums.
std::string resized(std::string png, std::uint32_t width, std::uint32_t height);
} // namespace damaged

/// A PNG file's pixels, decoded by libpng.
struct ReadFrame {
    int width = 0;
    int height = 0;
    std::string rgb;

    std::array<int, 3> at(int x, int y) const;
};

/// Nothing if the file is not a complete PNG file.
std::optional<ReadFrame> readFrame(const std::string& path);

} // namespace vistrane
