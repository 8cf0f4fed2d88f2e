#include "backends/sim/SimNib.h"

#include <stdexcept>
#include <utility>

namespace vistrane {

template <class Control>
std::shared_ptr<Control> SimNib::control(const std::string& name) {
    std::shared_ptr<NSObject>& held = controls_[name];
    if (!held) {
        auto made = std::make_shared<Control>(log_, name);
        if constexpr (std::is_same_v<Control, SimSlider>) {
            if (name == "fpsS") {
                made->setRange(1.0, 60.0);
            }
        }
        held = made;
    }
    auto control = std::dynamic_pointer_cast<Control>(held);
    if (!control) {
        throw std::logic_error("the control " + name + " is of another kind");
    }
    return control;
}

template <class Control, class Field>
void SimNib::fill(const std::string& name, Field& field) {
    asked_.insert(name);
    if (absent_.count(name) != 0) {
        field = nullptr;
        return;
    }
    field = control<Control>(name);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSWindow>& field) {
    fill<SimWindow>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSTextField>& field) {
    fill<SimTextField>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSSlider>& field) {
    fill<SimSlider>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSButton>& field) {
    fill<SimButton>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSImageView>& field) {
    fill<SimImageView>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) {
    fill<SimPopUpButton>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSView>& field) {
    fill<SimView>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) {
    fill<SimProgressIndicator>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSMenu>& field) {
    fill<SimMenu>(name, field);
}

void SimNib::outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) {
    fill<SimMenuItem>(name, field);
}

void SimNib::window(NSPanel& panel) {
    panel.setContents(absent_.count("panel") == 0 ? control<SimWindow>("panel") : nullptr);
}

void SimNib::sliderCell(const std::string& className,
                        std::function<std::shared_ptr<NSSliderCell>()> make) {
    if (!cells_.emplace(className, std::move(make)).second) {
        log_.misuse("sliderCell: " + className + " is offered twice");
    }
}

std::shared_ptr<NSSliderCell> SimNib::makeSliderCell(const std::string& className) const {
    const auto found = cells_.find(className);
    if (found == cells_.end()) {
        return nullptr;
    }
    auto cell = found->second();
    cell->awakeFromNib();
    return cell;
}

void SimNib::action(const std::string& selector, NSAction method) {
    if (!actions_.emplace(selector, std::move(method)).second) {
        log_.misuse("action: " + selector + " is offered twice");
    }
}

void SimNib::send(const std::string& selector, NSObject* sender) {
    const auto found = actions_.find(selector);
    if (found == actions_.end()) {
        log_.misuse("send: nobody offers " + selector);
        return;
    }
    found->second(sender);
}

std::set<std::string> SimNib::outlets() const {
    return asked_;
}

std::set<std::string> SimNib::actions() const {
    std::set<std::string> names;
    for (const auto& [selector, method] : actions_) {
        names.insert(selector);
    }
    return names;
}

// The kinds that the accessors of the header make.
template std::shared_ptr<SimWindow> SimNib::control(const std::string&);
template std::shared_ptr<SimTextField> SimNib::control(const std::string&);
template std::shared_ptr<SimSlider> SimNib::control(const std::string&);
template std::shared_ptr<SimButton> SimNib::control(const std::string&);
template std::shared_ptr<SimImageView> SimNib::control(const std::string&);
template std::shared_ptr<SimPopUpButton> SimNib::control(const std::string&);
template std::shared_ptr<SimView> SimNib::control(const std::string&);
template std::shared_ptr<SimMenu> SimNib::control(const std::string&);
template std::shared_ptr<SimMenuItem> SimNib::control(const std::string&);
template std::shared_ptr<SimProgressIndicator> SimNib::control(const std::string&);

} // namespace vistrane
