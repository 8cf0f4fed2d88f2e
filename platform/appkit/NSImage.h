#pragma once

#include <memory>

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

enum NSCompositingOperation {
    NSCompositingOperationCopy = 1,
    NSCompositingOperationSourceOver = 2
};

/// A picture. Immutable; any thread.
class NSImage : public NSObject {
public:
    /// In points: pixels x 72 / dpi where the file has a physical density, else pixels.
    virtual NSSize size() const = 0;

    /// The picture at its own pixel size, decoded, for `AppKit::imageRepWithData`; null when it
    /// cannot be decoded. The program reads no bytes of the result, so a back end may return data
    /// that carries the pixels and whose bytes are of another lossless file format than TIFF.
    virtual std::shared_ptr<NSData> TIFFRepresentation() const = 0;

    /// Draws into the thread's current graphics context with the picture's bottom left corner at
    /// `point`, at the picture's size in points. A zero `fromRect` means the whole picture.
    ///
    /// Nothing is thrown for a picture whose data turn out to be damaged: a pixel buffer that it
    /// was drawn into is marked, and a movie writer refuses it with the reason.
    virtual void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                             double fraction) const = 0;

    /// Draws into the thread's current graphics context, stretched to fill `rect` whatever the
    /// picture's own shape. A zero `fromRect` means the whole picture.
    virtual void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                            double fraction) const = 0;
};

} // namespace vistrane
