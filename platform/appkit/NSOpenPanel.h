#pragma once

#include <optional>
#include <string>

#include "platform/appkit/NSAlert.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// Lets the user choose files or folders. Main thread only.
class NSOpenPanel : public NSObject {
public:
    virtual void setTitle(const std::string& title) = 0;
    virtual void setCanChooseDirectories(bool allowed) = 0;
    virtual void setCanCreateDirectories(bool allowed) = 0;
    virtual void setAllowsMultipleSelection(bool allowed) = 0;
    virtual void setCanChooseFiles(bool allowed) = 0;
    /// The title of the confirming button.
    virtual void setPrompt(const std::string& prompt) = 0;

    /// Returns `NSModalResponseOK` if the user confirms. Timers do not fire meanwhile.
    virtual NSModalResponse runModal() = 0;

    /// The chosen item; nothing until the user confirms.
    virtual std::optional<NSURL> URL() const = 0;
};

} // namespace vistrane
