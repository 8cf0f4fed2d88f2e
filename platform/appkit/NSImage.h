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
    /// In points: pixels x 72 / dpi if the file has a physical density, otherwise pixels.
    virtual NSSize size() const = 0;

    /// Decodes the picture at its pixel size, for `AppKit::imageRepWithData`; null if that fails.
    /// The program never reads the bytes, so a back end may return data that carries the pixels and
    /// uses another lossless file format than TIFF.
    virtual std::shared_ptr<NSData> TIFFRepresentation() const = 0;

    /// Draws into the thread's current graphics context, with the bottom left corner at `point`, at
    /// the picture's size in points. A zero `fromRect` means the whole picture.
    ///
    /// If decoding finds that the data are damaged, nothing is thrown: the target pixel buffer is
    /// marked, and a movie writer refuses it with the reason.
    virtual void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                             double fraction) const = 0;

    /// Draws into the thread's current graphics context, stretched to fill `rect`. A zero
    /// `fromRect` means the whole picture.
    virtual void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                            double fraction) const = 0;
};

} // namespace vistrane
