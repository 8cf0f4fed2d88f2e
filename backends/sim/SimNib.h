#pragma once

#include <map>
#include <set>

#include "backends/sim/SimControls.h"
#include "backends/sim/SimMenus.h"
#include "platform/appkit/NSNib.h"

namespace vistrane {

/// An interface file that has every outlet it is asked for, as a control of that name. A rate
/// slider "fpsS" has the range 1 to 60, other sliders 0 to 100.
class SimNib final : public NSNib {
public:
    explicit SimNib(CallLog& log) : log_(log) {}

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
    /// Gives the panel the window "panel".
    void window(NSPanel& panel) override;
    void sliderCell(const std::string& className,
                    std::function<std::shared_ptr<NSSliderCell>()> make) override;
    void action(const std::string& selector, NSAction method) override;

    /// Leaves an outlet out; before the objects are connected.
    void leaveOut(const std::string& name) { absent_.insert(name); }

    /// A control, made when nobody has asked for it yet. A name that stands for another kind of
    /// control is a fault of the test and ends it.
    SimWindow& window(const std::string& name) { return *control<SimWindow>(name); }
    SimTextField& textField(const std::string& name) { return *control<SimTextField>(name); }
    SimSlider& slider(const std::string& name) { return *control<SimSlider>(name); }
    SimButton& button(const std::string& name) { return *control<SimButton>(name); }
    SimImageView& imageView(const std::string& name) { return *control<SimImageView>(name); }
    SimPopUpButton& popUp(const std::string& name) { return *control<SimPopUpButton>(name); }
    SimView& view(const std::string& name) { return *control<SimView>(name); }
    SimMenu& menu(const std::string& name) { return *control<SimMenu>(name); }
    SimMenuItem& menuItem(const std::string& name) { return *control<SimMenuItem>(name); }
    SimProgressIndicator& progress(const std::string& name) {
        return *control<SimProgressIndicator>(name);
    }

    /// Makes a cell of that class, awake; null when nobody offers it.
    std::shared_ptr<NSSliderCell> makeSliderCell(const std::string& className) const;

    /// Sends the action of that selector; a misuse when nobody offers it.
    void send(const std::string& selector, NSObject* sender = nullptr);
    std::set<std::string> outlets() const;
    std::set<std::string> actions() const;

private:
    template <class Control>
    std::shared_ptr<Control> control(const std::string& name);
    template <class Control, class Field>
    void fill(const std::string& name, Field& field);

    CallLog& log_;
    std::set<std::string> absent_;
    std::set<std::string> asked_;
    std::map<std::string, std::shared_ptr<NSObject>> controls_;
    std::map<std::string, std::function<std::shared_ptr<NSSliderCell>()>> cells_;
    std::map<std::string, NSAction> actions_;
};

} // namespace vistrane
