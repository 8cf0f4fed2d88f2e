#pragma once

#include <memory>
#include <string>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// The pictures of frontends/window/interface/pictures, which are built into the program. Main
/// thread only.
///
/// A name may have an extension, which need not be that of the file: "play1" and "tip1.png" may
/// both be vector files.
class QtResources {
public:
    QtResources();

    /// Null if there is no such picture, or if it is damaged.
    std::shared_ptr<NSImage> imageNamed(const std::string& name) const;
};

} // namespace vistrane
