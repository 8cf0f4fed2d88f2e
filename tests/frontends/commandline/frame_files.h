#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace vistrane {

/// What a PNG file is to look like. Its picture is of one colour.
struct FrameForm {
    int width = 64;
    int height = 48;
    /// The first component alone is taken where there is no colour.
    std::array<int, 3> colour = {128, 128, 128};
    int alpha = 255;

    enum class Kind { grey, greyAlpha, palette, rgb, rgba };
    Kind kind = Kind::rgb;
    /// 1 to 16, as the kind allows.
    int bitDepth = 8;
    bool isInterlaced = false;
    /// Dots per inch; 0 says nothing about them.
    int density = 0;
    /// Random bytes in the colour's place: nothing makes them small.
    bool isNoise = false;
};

void writeFrame(const std::string& path, const FrameForm& form = {});

/// A grey frame of the usual size.
void writeGreyFrame(const std::string& path, int grey);

/// The bytes of a good PNG file after something happened to them.
namespace damaged {
std::string truncated(std::string png);
std::string wrongChecksum(std::string png);
/// Its checksums are right.
std::string corruptData(std::string png);
/// Claims that size; its checksums are right.
std::string resized(std::string png, std::uint32_t width, std::uint32_t height);
} // namespace damaged

/// What a PNG file shows, read with libpng.
struct ReadFrame {
    int width = 0;
    int height = 0;
    std::string rgb;

    std::array<int, 3> at(int x, int y) const;
};

/// Nothing for a file that is not a whole PNG file.
std::optional<ReadFrame> readFrame(const std::string& path);

} // namespace vistrane
