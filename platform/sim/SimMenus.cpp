#include "platform/sim/SimMenus.h"

#include <utility>

namespace vistrane {

std::optional<std::string> SimMenuItem::representedObject() const {
    mainGetter("representedObject");
    return object;
}

void SimMenuItem::setRepresentedObject(const std::string& newObject) {
    mainCall("setRepresentedObject: " + newObject);
    object = newObject;
}

void SimMenuItem::setTarget(NSObject* newTarget) {
    mainCall("setTarget: " + std::string(newTarget != nullptr ? "object" : "(null)"));
    target = newTarget;
}

void SimMenuItem::setImage(std::shared_ptr<NSImage> newImage) {
    mainCall("setImage: " + nameOf(newImage.get()));
    image = std::move(newImage);
}

void SimMenuItem::setSubmenu(std::shared_ptr<NSMenu> newSubmenu) {
    mainCall("setSubmenu: " + nameOf(newSubmenu.get()));
    submenu = std::dynamic_pointer_cast<SimMenu>(std::move(newSubmenu));
}

void SimMenuItem::choose() {
    if (target != nullptr && action) {
        action(this);
    }
}

std::shared_ptr<NSMenuItem> SimMenu::addItemWithTitle(const std::string& title, NSAction action,
                                                      const std::string& keyEquivalent) {
    mainCall("addItemWithTitle: " + title + " keyEquivalent: \"" + keyEquivalent + "\"");
    auto item = std::make_shared<SimMenuItem>(log_, name() + "." + title);
    item->title = title;
    item->action = std::move(action);
    item->keyEquivalent = keyEquivalent;
    items.push_back(item);
    return item;
}

void SimMenu::cancelTracking() {
    mainCall("cancelTracking");
}

} // namespace vistrane
