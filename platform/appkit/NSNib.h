#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// An action of an object: gets the control that sends it, or the object that calls it.
using NSAction = std::function<void(NSObject* sender)>;

/// A loaded interface file, while its objects are connected. Main thread only.
///
/// An object asks for its outlets and offers its actions, each by name. The file decides which
/// control an outlet means and which control sends which action.
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

    /// Offers an action under its selector, for instance "startRunning:".
    virtual void action(const std::string& selector, NSAction method) = 0;

protected:
    NSNib() = default;
};

} // namespace vistrane
