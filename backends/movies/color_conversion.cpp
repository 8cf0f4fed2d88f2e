#include "backends/movies/color_conversion.h"

#include "backends/movies/color_rows.h"

namespace vistrane {

void convertToPlanar709(const PictureView& picture, const PlanarPicture& target) {
    const RowConversion& rows = fastestRowConversion();
    for (std::size_t y = 0; y < target.height; y += 2) {
        const std::uint8_t* top = picture.bytes + y * picture.stride;
        const std::uint8_t* bottom = y + 1 < picture.height ? top + picture.stride : top;
        std::uint8_t* luma = target.luma + y * target.lumaStride;
        rows.luma(top, picture.width, luma);
        rows.luma(bottom, picture.width, luma + target.lumaStride);
        if (target.width > picture.width) {
            luma[picture.width] = luma[picture.width - 1];
            luma[target.lumaStride + picture.width] = luma[target.lumaStride + picture.width - 1];
        }
        const std::size_t chromaStart = y / 2 * target.chromaStride;
        rows.chroma(top, bottom, picture.width, target.blueDifference + chromaStart,
                    target.redDifference + chromaStart);
    }
}

} // namespace vistrane
