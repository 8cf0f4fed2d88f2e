#pragma once

#include "platform/appkit/NSApplication.h"

namespace vistrane {

/// An application without windows: nothing to minimise or to bring to the front.
class ConsoleApplication final : public NSApplication {
public:
    void miniaturizeAll(NSObject*) override {}
    bool setActivationPolicy(NSApplicationActivationPolicy) override { return false; }
    void activateIgnoringOtherApps(bool) override {}
};

} // namespace vistrane
