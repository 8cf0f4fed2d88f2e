#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// A picture to read: the top row first, 4 bytes a pixel: one that means nothing, red, green,
/// blue; rows `stride` bytes apart. Somebody else's memory.
struct PictureView {
    const std::uint8_t* bytes = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t stride = 0;
};

/// A 4:2:0 picture to write, in three planes. Width and height are even; the chroma planes have
/// half of each. Somebody else's memory.
struct PlanarPicture {
    std::uint8_t* luma = nullptr;
    std::uint8_t* blueDifference = nullptr;
    std::uint8_t* redDifference = nullptr;
    std::size_t lumaStride = 0;
    std::size_t chromaStride = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Red, green, blue to ITU-R BT.709 Y'CbCr, 8 bits, limited range (luma 16 to 235, chroma 16 to
/// 240 around 128). Luma is within a hundredth of exact before it is rounded.
///
/// A chroma sample lies on the even luma column and midway between its two rows, which is where
/// H.264 has it by default: it is the mean of two rows weighted 1, 2, 1 over three columns.
///
/// The target is the picture's size rounded up to even; the last column and row are repeated.
void convertToPlanar709(const PictureView& picture, const PlanarPicture& target);

} // namespace vistrane
