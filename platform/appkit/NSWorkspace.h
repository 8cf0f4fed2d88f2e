#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// The user's other programs. Any thread.
class NSWorkspace : public NSObject {
public:
    /// Opens an address with its default program and returns at once. A movie that is still being
    /// written is opened when it is complete, and not at all if writing fails. Returns false only
    /// when no program can open the address.
    virtual bool openURL(const NSURL& url) = 0;
};

} // namespace vistrane
