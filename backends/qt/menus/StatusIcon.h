#pragma once

#include <functional>

#include <QIcon>
#include <QMenu>
#include <QString>
#include <QSystemTrayIcon>

namespace vistrane {

/// The program's icon in the desktop's status area, with a menu. Where the desktop has no such
/// area nothing is shown and nothing fails; the icon appears when the area does.
class StatusIcon {
public:
    /// `menu` outlives the icon. A plain click on the icon calls `bringBack`; the desktop decides
    /// whether it has one or opens the menu.
    StatusIcon(QMenu& menu, const QIcon& icon, const QString& toolTip,
               std::function<void()> bringBack);
    ~StatusIcon();
    StatusIcon(const StatusIcon&) = delete;
    StatusIcon& operator=(const StatusIcon&) = delete;

    /// Whether the user can see it.
    bool isShown() const;

private:
    QSystemTrayIcon icon_;
};

} // namespace vistrane
