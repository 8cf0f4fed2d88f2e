#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// A picture to read: the top row first, with a row stride of `stride` bytes; 4 bytes per pixel:
/// one ignored, red, green, blue. Does not own its memory.
struct PictureView {
    const std::uint8_t* bytes = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t stride = 0;
};

/// A 4:2:0 picture to write, in three planes. Strides are in bytes. Width and height are even; the
/// chroma planes have half of each. Does not own its memory.
struct PlanarPicture {
    std::uint8_t* luma = nullptr;
    std::uint8_t* blueDifference = nullptr;
    std::uint8_t* redDifference = nullptr;
    std::size_t lumaStride = 0;
    std::size_t chromaStride = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Converts red, green and blue to ITU-R BT.709 Y'CbCr, 8 bits, limited range (luma 16 to 235,
/// chroma 16 to 240 around 128). Luma is within 0.01 of the exact value before it is rounded.
///
/// Chroma samples have H.264's default position: on the even luma columns, midway between two rows.
/// Each is the mean of two rows and of three columns with the weights 1, 2, 1.
///
/// The target has the picture's size rounded up to even. The last column and row are repeated.
void convertToPlanar709(const PictureView& picture, const PlanarPicture& target);

} // namespace vistrane
