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
/// The answer of the first button; the second returns one more, and so on.
inline constexpr NSModalResponse NSAlertFirstButtonReturn = 1000;

/// A message that waits for an answer. Create, set up and run it on the same thread. Any thread.
///
/// On the main thread `runModal` blocks the caller. Timers do not fire meanwhile; each fires at
/// most once late afterwards. Work of the main queue still runs. On another thread it blocks that
/// thread only, without using processor time.
class NSAlert : public NSObject {
public:
    virtual void setMessageText(const std::string& text) = 0;
    virtual void setInformativeText(const std::string& text) = 0;

    /// The order of the buttons gives their answers; the first is the default. An alert without
    /// buttons gets one that confirms.
    virtual void addButtonWithTitle(const std::string& title) = 0;

    /// Shown below the texts. The alert borrows the view, which still belongs to the interface
    /// file.
    virtual void setAccessoryView(std::shared_ptr<NSView> view) = 0;

    virtual NSWindow& window() = 0;

    /// Shows the alert and returns the answer.
    virtual NSModalResponse runModal() = 0;
};

} // namespace vistrane
