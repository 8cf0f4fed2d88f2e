#pragma once

#include <string>

#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// A window that is never shown. No field in it is ever being edited.
class ConsoleWindow final : public NSWindow {
public:
    bool makeFirstResponder(NSObject*) override { return true; }
    void makeKeyAndOrderFront(NSObject*) override {}
    void setTitle(const std::string&) override {}
    void setTitlebarAppearsTransparent(bool) override {}
};

} // namespace vistrane
