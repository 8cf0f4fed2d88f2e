#include "backends/qt/menus/QtMenu.h"

#include <utility>

#include <QApplication>
#include <QKeySequence>
#include <QString>

namespace vistrane {

namespace {

QString escapedTitle(const std::string& title) {
    return QString::fromStdString(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QKeySequence shortcutFor(const std::string& keyEquivalent) {
    const QString key = QString::fromStdString(keyEquivalent);
    if (key.isEmpty()) {
        return {};
    }
    const bool shifted = key.toUpper() == key && key.toLower() != key;
    return QKeySequence((shifted ? QLatin1String("Ctrl+Shift+") : QLatin1String("Ctrl+")) +
                        key.toUpper());
}

} // namespace

QtMenu::QtMenu(MenuIconMaker iconMaker)
    : own_(std::make_unique<QMenu>()), menu_(own_.get()), iconMaker_(std::move(iconMaker)) {}

QtMenu::QtMenu(QMenu& menu, MenuIconMaker iconMaker)
    : menu_(&menu), iconMaker_(std::move(iconMaker)) {}

QtMenu::~QtMenu() = default;

std::shared_ptr<NSMenuItem> QtMenu::addItemWithTitle(const std::string& title, NSAction action,
                                                     const std::string& keyEquivalent) {
    if (menu_ == nullptr) {
        return nullptr;
    }
    QAction* const entry = menu_->addAction(escapedTitle(title));
    entry->setShortcut(shortcutFor(keyEquivalent));
    // By default, some systems move entries with titles such as "About" to another menu.
    entry->setMenuRole(QAction::NoRole);
    items_.push_back(std::make_shared<QtMenuItem>(*entry, iconMaker_, std::move(action)));
    return items_.back();
}

void QtMenu::cancelTracking() {
    if (menu_ == nullptr || !menu_->isVisible()) {
        return;
    }
    // Open popups form a stack with the submenus on top.
    while (QWidget* const top = QApplication::activePopupWidget()) {
        top->hide();
        if (top == QApplication::activePopupWidget()) {
            return;
        }
    }
}

QMenu* QtMenu::qtMenu() const {
    return menu_;
}

} // namespace vistrane
