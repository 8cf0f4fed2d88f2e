#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/NibOutlets.h"

namespace vistrane {

class QtSlider;
class QtWindow;

/// The interface files from the view of one object: the controls of its outlets, and the senders of
/// its actions. Main thread only.
class QtNib final : public NibOutlets {
public:
    using Connection = std::function<void(const NSAction&)>;

    /// Calls `connect` with the action of that selector when the object registers it.
    void addSender(const std::string& selector, Connection connect);

    /// Adds a slider that is drawn by a cell of that class.
    void addCellSlider(const std::string& className, std::shared_ptr<QtSlider> slider);

    /// The window of an object that is itself a panel.
    void setPanelWindow(std::shared_ptr<QtWindow> window);

    void window(NSPanel& panel) override;
    void sliderCell(const std::string& className,
                    std::function<std::shared_ptr<NSSliderCell>()> make) override;
    void action(const std::string& selector, NSAction method) override;

private:
    std::multimap<std::string, Connection> senders_;
    std::multimap<std::string, std::shared_ptr<QtSlider>> cellSliders_;
    std::shared_ptr<QtWindow> panelWindow_;
};

} // namespace vistrane
