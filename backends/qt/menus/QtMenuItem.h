#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QAction>
#include <QIcon>
#include <QMetaObject>
#include <QPointer>

#include "platform/appkit/NSMenu.h"

namespace vistrane {

class QtMenu;

/// Converts a picture of the program to an icon for a menu.
using MenuIconMaker = std::function<QIcon(const NSImage&)>;

/// An entry of a menu, on a QAction of a QtMenu or of the interface file. The action belongs to its
/// menu; once that is destroyed, the entry does nothing.
class QtMenuItem final : public NSMenuItem {
public:
    /// `sends` is called when the user chooses the entry, if it has a target. May be empty.
    QtMenuItem(QAction& item, MenuIconMaker iconMaker, NSAction sends = {});
    ~QtMenuItem() override;

    std::optional<std::string> representedObject() const override;
    void setRepresentedObject(const std::string& object) override;
    void setTarget(NSObject* target) override;
    /// Shown even if the desktop shows no icons in menus.
    void setImage(std::shared_ptr<NSImage> image) override;
    void setSubmenu(std::shared_ptr<NSMenu> submenu) override;

    /// Null once the menu is destroyed.
    QAction* qtAction() const;

private:
    void send();

    QPointer<QAction> item_;
    MenuIconMaker iconMaker_;
    NSAction sends_;
    QMetaObject::Connection triggered_;
    std::optional<std::string> representedObject_;
    NSObject* target_ = nullptr;
    std::shared_ptr<QtMenu> submenu_;
};

} // namespace vistrane
