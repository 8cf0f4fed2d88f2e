#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Memory to draw into: `height` rows of `width` pixels, the top row at `rows`, each next one
/// `stride` bytes on; 4 bytes a pixel: one that means nothing, red, green, blue; sRGB values.
/// One point is one pixel; the origin is the bottom left corner.
struct Surface {
    std::uint8_t* rows = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::ptrdiff_t stride = 0;
};

/// Where and how a picture is drawn; see `NSImage::drawAtPoint` and `drawInRect`.
struct Drawing {
    NSPoint point;
    /// In points of the picture; zero means the whole picture.
    NSRect from;
    NSCompositingOperation operation = NSCompositingOperationCopy;
    double fraction = 1.0;
    /// How many times as wide and high as its size in points the picture is drawn.
    NSSize scale{1.0, 1.0};
};

/// Draws a picture; what lies outside the surface or the picture is left out, and numbers that are
/// no place draw nothing. The meaningless byte of each pixel drawn becomes 255.
///
/// A picture that is drawn at its size in pixels is drawn without any change of its values.
/// Others are scaled: down by the average of the area that falls on a pixel, up by a bicubic
/// curve (Catmull-Rom), both on sRGB values multiplied by alpha. A pixel is drawn when its middle
/// lies in the picture.
///
/// The surface has no alpha: copying leaves a transparent picture multiplied by its alpha, which
/// is to say over black; compositing leaves it over what was there.
///
/// Returns why the picture could not be decoded; the surface may then hold a part of it.
std::optional<NSError> drawPicture(const PictureSource& picture, const Surface& surface,
                                   const Drawing& drawing);

} // namespace vistrane
