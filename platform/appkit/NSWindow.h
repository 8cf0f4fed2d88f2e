#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A window. Main thread only, except that an alert's window belongs to the alert's thread.
class NSWindow : public NSObject {
public:
    /// Ends editing: the edited field commits its text and sends its action. The program always
    /// passes null, so no control becomes the first responder. Returns whether that succeeded.
    virtual bool makeFirstResponder(NSObject* responder) = 0;
    virtual void makeKeyAndOrderFront(NSObject* sender) = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void setTitlebarAppearsTransparent(bool transparent) = 0;
};

} // namespace vistrane
