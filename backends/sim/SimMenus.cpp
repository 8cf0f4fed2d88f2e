#include "backends/sim/SimMenus.h"

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
    mainCall("setTarget: " + nameOf(newTarget));
    target = newTarget;
}

void SimMenuItem::setImage(std::shared_ptr<NSImage> newImage) {
    mainCall("setImage: " + nameOf(newImage.get()));
    image = std::move(newImage);
}

void SimMenuItem::setSubmenu(std::shared_ptr<NSMenu> newSubmenu) {
    const std::string given = nameOf(newSubmenu.get());
    mainCall("setSubmenu: " + given);
    if (submenu) {
        submenu->isSubmenu = false;
    }
    submenu = std::dynamic_pointer_cast<SimMenu>(std::move(newSubmenu));
    if (submenu && std::exchange(submenu->isSubmenu, true)) {
        log_.misuse(name() + " setSubmenu: " + given + " is another item's");
    }
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
