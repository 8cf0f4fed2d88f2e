#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Memory to draw into: `height` rows of `width` pixels, the top row first, with a row stride of
/// `stride` bytes. 4 bytes per pixel: one ignored, red, green, blue; sRGB values. One point is one
/// pixel; the origin is the bottom left corner.
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
    /// The drawn size as a multiple of the size in points.
    NSSize scale{1.0, 1.0};
};

/// Draws a picture, clipped to the surface. Draws nothing if a number is out of range or not
/// finite. The ignored byte of each drawn pixel becomes 255.
///
/// A picture that is drawn at its size in pixels keeps its values. Otherwise it is scaled down by
/// area averaging or up by the Catmull-Rom cubic (see `resampling.h`), on premultiplied sRGB
/// values. A pixel is drawn if its centre lies in the picture.
///
/// The surface has no alpha: copying draws a transparent picture over black, compositing draws it
/// over the previous content.
///
/// Returns the reason if the picture cannot be decoded. The surface may then hold a part of it.
std::optional<NSError> drawPicture(const PictureSource& picture, const Surface& surface,
                                   const Drawing& drawing);

} // namespace vistrane
