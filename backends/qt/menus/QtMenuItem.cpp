#include "backends/qt/menus/QtMenuItem.h"

#include <utility>

#include <QApplication>
#include <QMenu>

#include "backends/qt/menus/QtMenu.h"

namespace vistrane {

QtMenuItem::QtMenuItem(QAction& item, MenuIconMaker iconMaker, NSAction sends)
    : item_(&item), iconMaker_(std::move(iconMaker)), sends_(std::move(sends)),
      triggered_(QObject::connect(&item, &QAction::triggered, [this] { send(); })) {}

QtMenuItem::~QtMenuItem() {
    QObject::disconnect(triggered_);
    if (item_ != nullptr && submenu_ != nullptr) {
        item_->setMenu(nullptr);
    }
}

std::optional<std::string> QtMenuItem::representedObject() const {
    return representedObject_;
}

void QtMenuItem::setRepresentedObject(const std::string& object) {
    representedObject_ = object;
}

void QtMenuItem::setTarget(NSObject* target) {
    target_ = target;
}

void QtMenuItem::setImage(std::shared_ptr<NSImage> image) {
    if (item_ == nullptr) {
        return;
    }
    item_->setIcon(image != nullptr && iconMaker_ ? iconMaker_(*image) : QIcon());
    item_->setIconVisibleInMenu(true);
}

void QtMenuItem::setSubmenu(std::shared_ptr<NSMenu> submenu) {
    std::shared_ptr<QtMenu> next = std::dynamic_pointer_cast<QtMenu>(std::move(submenu));
    if (item_ != nullptr) {
        item_->setMenu(next != nullptr ? next->qtMenu() : nullptr);
    }
    // Destroys the previous submenu only now, because the action no longer points at it.
    submenu_ = std::move(next);
}

QAction* QtMenuItem::qtAction() const {
    return item_;
}

void QtMenuItem::send() {
    // A desktop that draws the menu itself does not know that a dialog blocks it.
    const bool isBlocked = QApplication::activeModalWidget() != nullptr;
    if (target_ != nullptr && sends_ && !isBlocked) {
        // A copy, because the action may destroy this entry.
        const NSAction action = sends_;
        action(this);
    }
}

} // namespace vistrane
