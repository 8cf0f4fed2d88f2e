#include "platform/NibOutlets.h"

#include <utility>

namespace vistrane {

void NibOutlets::addOutlet(const std::string& name, std::shared_ptr<NSObject> control) {
    outlets_[name] = std::move(control);
}

template <typename Type>
void NibOutlets::fill(const std::string& name, std::shared_ptr<Type>& field) const {
    const auto entry = outlets_.find(name);
    if (entry == outlets_.end()) {
        return;
    }
    if (std::shared_ptr<Type> control = std::dynamic_pointer_cast<Type>(entry->second)) {
        field = std::move(control);
    }
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSWindow>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSTextField>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSSlider>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSButton>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSImageView>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSView>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSMenu>& field) {
    fill(name, field);
}

void NibOutlets::outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) {
    fill(name, field);
}

} // namespace vistrane
