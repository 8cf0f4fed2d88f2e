#pragma once

#include <memory>

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

enum NSBitmapImageFileType { NSBitmapImageFileTypePNG = 4 };

/// Settings of an encoder.
struct NSBitmapImageProperties {
    /// "NSImageCompressionFactor", from 0 to 1; lossless formats ignore it.
    float NSImageCompressionFactor = 1.0F;
    bool operator==(const NSBitmapImageProperties&) const = default;
};

/// Decoded pixels. Immutable; any thread.
class NSBitmapImageRep : public NSObject {
public:
    /// Encodes the picture as a file of that type; null if that fails.
    virtual std::shared_ptr<NSData>
    representationUsingType(NSBitmapImageFileType type,
                            const NSBitmapImageProperties& properties) const = 0;
};

} // namespace vistrane
