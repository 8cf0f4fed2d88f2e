#pragma once

#include <memory>
#include <string>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// The pictures of the folder frontends/window/interface/pictures, which are part of the program.
/// Main thread only.
///
/// A name may have an extension, which need not be that of the file: "play1" and "tip1.png" may
/// both be vector files.
class QtResources {
public:
    QtResources();

    /// Null when there is no such picture, or when it is damaged.
    std::shared_ptr<NSImage> imageNamed(const std::string& name) const;
};

} // namespace vistrane
