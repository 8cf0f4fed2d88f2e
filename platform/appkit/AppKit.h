#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/ImageUse.h"
#include "platform/appkit/NSAlert.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/appkit/NSWorkspace.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Class messages and functions of AppKit. Main thread only, unless a comment says otherwise.
/// Returned objects are owned by the caller; references are valid as long as the kit.
class AppKit {
public:
    virtual ~AppKit() = default;
    AppKit(const AppKit&) = delete;
    AppKit& operator=(const AppKit&) = delete;

    virtual NSApplication& sharedApplication() = 0;
    /// Any thread.
    virtual NSWorkspace& sharedWorkspace() = 0;

    /// A new, empty alert. Any thread.
    virtual std::unique_ptr<NSAlert> alert() = 0;
    /// The complete standard alert for an error.
    virtual std::unique_ptr<NSAlert> alertWithError(const NSError& error) = 0;
    virtual std::unique_ptr<NSOpenPanel> openPanel() = 0;

    /// A new, empty menu.
    virtual std::shared_ptr<NSMenu> menu() = 0;

    /// A picture of the program's resources; null if there is none with that name.
    virtual std::shared_ptr<NSImage> imageNamed(const std::string& name) = 0;
    /// Reads a picture file; null if that fails. Does not block on a file that is not regular. Any
    /// thread.
    virtual std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) = 0;
    /// A hint that has no visible effect: probably `imageWithContentsOfFile` is called next with
    /// `paths[first]`, `paths[first + 1]` and so on. Replaces the last hint of this use; null ends
    /// it. Takes the same time however long the list is. Any thread.
    virtual void expectImages(std::shared_ptr<const std::vector<std::string>> paths,
                              std::size_t first, ImageUse use) = 0;
    /// A picture from the bytes of a file; null without data or if they are not a picture.
    virtual std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) = 0;
    /// Null without data or if they are not a picture.
    virtual std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) = 0;

    // The graphics state of the calling thread. Any thread. The graphics context wraps `context`;
    // it must not be current when `context` is released.
    virtual std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                            bool flipped) = 0;
    virtual void saveGraphicsState() = 0;
    virtual void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) = 0;
    virtual void restoreGraphicsState() = 0;

    virtual void NSBeep() = 0;

protected:
    AppKit() = default;
};

} // namespace vistrane
