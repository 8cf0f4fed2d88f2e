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

    /// The title is shown as it is: no character in it becomes a mnemonic. A key equivalent is
    /// one character, pressed with the platform's command key; a capital one with shift as well.
    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                 const std::string& keyEquivalent) override;

    /// Closes the whole chain of open menus that this one is part of, from the submenus up. A
    /// menu that the desktop itself draws, as some status areas do, is not in our hands.
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
