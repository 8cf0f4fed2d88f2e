#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QPointer>

#include "backends/qt/menus/QtMenuItem.h"
#include "platform/appkit/NSMenu.h"

namespace vistrane {

/// A menu over a QMenu. Destroyed before the QApplication.
class QtMenu final : public NSMenu {
public:
    /// A new, empty menu.
    explicit QtMenu(MenuIconMaker iconMaker);
    /// A menu of the interface file, which keeps it.
    QtMenu(QMenu& menu, MenuIconMaker iconMaker);
    ~QtMenu() override;

    /// No character of the title becomes a mnemonic. A key equivalent is one character, pressed
    /// with the platform's command key; a capital letter is pressed with shift as well.
    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                 const std::string& keyEquivalent) override;

    /// Closes all open menus of which this one is part, submenus first. A menu that the desktop
    /// draws, as some status areas do, cannot be closed.
    void cancelTracking() override;

    /// Null when the interface file's menu is gone.
    QMenu* qtMenu() const;

private:
    std::unique_ptr<QMenu> own_;
    QPointer<QMenu> menu_;
    MenuIconMaker iconMaker_;
    std::vector<std::shared_ptr<QtMenuItem>> items_;
};

} // namespace vistrane
