#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/NSNib.h"

namespace vistrane {

class QtSlider;
class QtWindow;

/// The interface files as one of their objects sees them: which control an outlet means, and which
/// controls send an action. Main thread only.
class QtNib final : public NSNib {
public:
    using Connection = std::function<void(const NSAction&)>;

    /// Makes `control` the outlet of that name, in place of an earlier one.
    void addOutlet(const std::string& name, std::shared_ptr<NSObject> control);

    /// `connect` is given the action of that selector as soon as the object offers it.
    void addSender(const std::string& selector, Connection connect);

    /// A slider that draws itself through a cell of that class.
    void addCellSlider(const std::string& className, std::shared_ptr<QtSlider> slider);

    /// The window of an object that is a panel itself.
    void setPanelWindow(std::shared_ptr<QtWindow> window);

    // A field is filled only with a control of its own type.
    void outlet(const std::string& name, std::shared_ptr<NSWindow>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSTextField>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSSlider>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSButton>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSImageView>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSView>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSMenu>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) override;

    void window(NSPanel& panel) override;
    void sliderCell(const std::string& className,
                    std::function<std::shared_ptr<NSSliderCell>()> make) override;
    void action(const std::string& selector, NSAction method) override;

private:
    template <typename Type>
    void fill(const std::string& name, std::shared_ptr<Type>& field) const;

    std::map<std::string, std::shared_ptr<NSObject>> outlets_;
    std::multimap<std::string, Connection> senders_;
    std::multimap<std::string, std::shared_ptr<QtSlider>> cellSliders_;
    std::shared_ptr<QtWindow> panelWindow_;
};

} // namespace vistrane
