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

/// A loaded interface file, while one of its objects is connected to it. Main thread only.
///
/// An object asks for its outlets and offers its actions, each by name. The file decides which
/// control an outlet means and which control sends which action. Each object has names of its own:
/// one outlet name may mean different controls to two objects.
class NSNib {
public:
    virtual ~NSNib() = default;
    NSNib(const NSNib&) = delete;
    NSNib& operator=(const NSNib&) = delete;

    /// Fills `field` with the control of that outlet name; leaves it null when the file has none.
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

    /// Gives an object that is itself a panel the window that the file describes for it.
    virtual void window(NSPanel& panel) = 0;

    /// Offers a class of slider cells under its name. The file creates and wakes one for each
    /// slider that names the class.
    virtual void sliderCell(const std::string& className,
                            std::function<std::shared_ptr<NSSliderCell>()> make) = 0;

    /// Offers an action under its selector, for instance "startRunning:", or a message to a
    /// window's delegate, for instance "windowWillClose:".
    virtual void action(const std::string& selector, NSAction method) = 0;

protected:
    NSNib() = default;
};

} // namespace vistrane
