#include "platform/console/ConsoleNib.h"

#include <utility>

namespace vistrane {

void ConsoleNib::addOutlet(const std::string& name, std::shared_ptr<NSObject> control) {
    outlets_[name] = std::move(control);
}

template <typename Type>
void ConsoleNib::fill(const std::string& name, std::shared_ptr<Type>& field) const {
    const auto entry = outlets_.find(name);
    if (entry == outlets_.end()) {
        return;
    }
    if (std::shared_ptr<Type> control = std::dynamic_pointer_cast<Type>(entry->second)) {
        field = std::move(control);
    }
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSWindow>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSTextField>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSSlider>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSButton>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSImageView>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSView>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSMenu>& field) {
    fill(name, field);
}

void ConsoleNib::outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) {
    fill(name, field);
}

void ConsoleNib::action(const std::string& selector, NSAction method) {
    const auto senders = senders_.find(selector);
    if (senders != senders_.end()) {
        for (const auto& connect : senders->second) {
            connect(method);
        }
    }
    actions_[selector] = std::move(method);
}

bool ConsoleNib::send(const std::string& selector, NSObject* sender) const {
    const auto entry = actions_.find(selector);
    if (entry == actions_.end() || !entry->second) {
        return false;
    }
    entry->second(sender);
    return true;
}

} // namespace vistrane
