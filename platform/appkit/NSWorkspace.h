#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// The user's other programs. Any thread.
class NSWorkspace : public NSObject {
public:
    /// Hands an address to its default program and returns at once. A movie that is still being
    /// written is handed over when it is whole, and never if that fails. Returns false only when
    /// it is known that nothing can open the address.
    virtual bool openURL(const NSURL& url) = 0;
};

} // namespace vistrane
