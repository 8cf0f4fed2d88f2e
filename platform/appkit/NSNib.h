#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSPanel.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSSliderCell.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// Connects one object with the loaded interface file. Main thread only.
///
/// An object requests its outlets and registers its actions, each by name. The file says which
/// control an outlet is and which controls send an action. Names are per object: the same outlet
/// name may refer to different controls of two objects.
class NSNib {
public:
    virtual ~NSNib() = default;
    NSNib(const NSNib&) = delete;
    NSNib& operator=(const NSNib&) = delete;

    /// Sets `field` to the control of that outlet name; leaves it null if the file has none.
    virtual void outlet(const std::string& name, std::shared_ptr<NSWindow>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSTextField>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSSlider>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSButton>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSImageView>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSView>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSMenu>& field) = 0;
    virtual void outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) = 0;

    /// For an object that is itself a panel: gives it the window that the file describes.
    virtual void window(NSPanel& panel) = 0;

    /// Registers a class of slider cells. The file creates one for each slider that names the
    /// class, and calls its `awakeFromNib`.
    virtual void sliderCell(const std::string& className,
                            std::function<std::shared_ptr<NSSliderCell>()> make) = 0;

    /// Registers an action under its selector, such as "startRunning:", or a message to a window's
    /// delegate, such as "windowWillClose:".
    virtual void action(const std::string& selector, NSAction method) = 0;

protected:
    NSNib() = default;
};

} // namespace vistrane
