#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QPointer>

#include "backends/qt/menus/QtMenuItem.h"
#include "platform/appkit/NSMenu.h"

namespace vistrane {

/// A menu on a QMenu. Destroy it before the QApplication.
class QtMenu final : public NSMenu {
public:
    /// A new, empty menu.
    explicit QtMenu(MenuIconMaker iconMaker);
    /// A menu of the interface file, which owns it.
    QtMenu(QMenu& menu, MenuIconMaker iconMaker);
    ~QtMenu() override;

    /// No character of the title becomes a mnemonic. A key equivalent is one character, pressed
    /// with the platform's command key; a capital letter also needs shift.
    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                 const std::string& keyEquivalent) override;

    /// Closes all open menus that this one is part of, submenus first. A menu that the desktop
    /// draws, as some status areas do, cannot be closed.
    void cancelTracking() override;

    /// Null once the interface file's menu is destroyed.
    QMenu* qtMenu() const;

private:
    std::unique_ptr<QMenu> own_;
    QPointer<QMenu> menu_;
    MenuIconMaker iconMaker_;
    std::vector<std::shared_ptr<QtMenuItem>> items_;
};

} // namespace vistrane
