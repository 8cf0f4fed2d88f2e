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

/// A message that waits for an answer. Created, set up and run on one thread, which may be any.
///
/// On the main thread `runModal` blocks the caller. Timers do not fire meanwhile; each fires at
/// most once late afterwards. Work of the main queue still runs. On another thread it blocks that
/// thread only, without using processor time.
class NSAlert : public NSObject {
public:
    virtual void setMessageText(const std::string& text) = 0;
    virtual void setInformativeText(const std::string& text) = 0;

    /// Buttons answer in the order in which they were added; the first is the default. An alert
    /// without buttons has one that confirms.
    virtual void addButtonWithTitle(const std::string& title) = 0;

    /// Shown below the texts. The view stays the interface file's; the alert borrows it.
    virtual void setAccessoryView(std::shared_ptr<NSView> view) = 0;

    virtual NSWindow& window() = 0;

    /// Shows the alert and returns the answer.
    virtual NSModalResponse runModal() = 0;
};

} // namespace vistrane
