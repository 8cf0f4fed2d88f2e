#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

using NSModalResponse = NSInteger;
inline constexpr NSModalResponse NSModalResponseCancel = 0;
inline constexpr NSModalResponse NSModalResponseOK = 1;
/// The first added button; the second returns one more, and so on.
inline constexpr NSModalResponse NSAlertFirstButtonReturn = 1000;

/// A message that waits for an answer. Made, set up and run by one thread.
///
/// On the main thread `runModal` blocks the caller, and timers hold back meanwhile: each has at
/// most one late tick afterwards. The main queue's work goes on. On another thread it blocks that
/// thread only, without using processor time.
class NSAlert : public NSObject {
public:
    virtual void setMessageText(const std::string& text) = 0;
    virtual void setInformativeText(const std::string& text) = 0;

    /// Buttons answer in the order in which they were added; the first is the default. An alert
    /// without buttons has one that confirms.
    virtual void addButtonWithTitle(const std::string& title) = 0;

    /// Shown below the texts. The view belongs to the interface file and goes back to it.
    virtual void setAccessoryView(std::shared_ptr<NSView> view) = 0;

    virtual NSWindow& window() = 0;

    /// Shows the alert and returns the answer.
    virtual NSModalResponse runModal() = 0;
};

} // namespace vistrane
