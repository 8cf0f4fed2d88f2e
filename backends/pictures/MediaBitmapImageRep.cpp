#include "backends/pictures/MediaBitmapImageRep.h"

#include <utility>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/png_encoding.h"

namespace vistrane {

MediaBitmapImageRep::MediaBitmapImageRep(std::shared_ptr<const PictureSource> source,
                                         PictureObserver& observer)
    : source_(std::move(source)), observer_(observer) {}

std::shared_ptr<NSData>
MediaBitmapImageRep::representationUsingType(NSBitmapImageFileType type,
                                             const NSBitmapImageProperties&) const {
    if (type != NSBitmapImageFileTypePNG) {
        return nullptr;
    }
    auto file = pngFileOf(*source_);
    if (!file) {
        observer_.imageCouldNotBeRead(
            "", {"NSCocoaErrorDomain", 0,
                 "The picture could not be encoded as PNG. Close some programs: there may be too "
                 "little memory"});
    }
    return file ? std::make_shared<DataBytes>(std::move(file), &observer_) : nullptr;
}

} // namespace vistrane
