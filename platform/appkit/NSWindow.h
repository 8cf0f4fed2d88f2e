#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A window. Main thread only, except the window of an alert, which its alert's thread uses.
class NSWindow : public NSObject {
public:
    /// Null ends any edit: the edited field takes over its text and sends its action.
    virtual bool makeFirstResponder(NSObject* responder) = 0;
    virtual void makeKeyAndOrderFront(NSObject* sender) = 0;
    virtual void setTitle(const std::string& title) = 0;
    virtual void setTitlebarAppearsTransparent(bool transparent) = 0;
};

} // namespace vistrane
