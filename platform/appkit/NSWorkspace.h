#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// The user's other programs. Any thread.
class NSWorkspace : public NSObject {
public:
    /// Opens an address with its default program and returns immediately. A movie that is still
    /// being written is opened when it is complete; if writing fails, it is not opened. Returns
    /// false only if no program can open the address.
    virtual bool openURL(const NSURL& url) = 0;
};

} // namespace vistrane
