#pragma once

#include <memory>

#include "backends/pictures/PictureObserver.h"
#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSBitmapImageRep.h"

namespace vistrane {

/// A picture to encode. The data that it returns report their writing to the observer, which
/// outlives them.
class MediaBitmapImageRep final : public NSBitmapImageRep {
public:
    MediaBitmapImageRep(std::shared_ptr<const PictureSource> source, PictureObserver& observer);

    /// PNG only; see `encodePng`.
    std::shared_ptr<NSData>
    representationUsingType(NSBitmapImageFileType type,
                            const NSBitmapImageProperties& properties) const override;

private:
    std::shared_ptr<const PictureSource> source_;
    PictureObserver& observer_;
};

} // namespace vistrane
