#pragma once

#include <functional>

#include <QIcon>
#include <QMenu>
#include <QString>
#include <QSystemTrayIcon>

namespace vistrane {

/// The program's icon in the desktop's status area, with a menu. It appears as soon as there is a
/// status area.
class StatusIcon {
public:
    /// `menu` outlives the icon. A plain click on the icon calls `bringBack`, unless the desktop
    /// opens the menu instead.
    StatusIcon(QMenu& menu, const QIcon& icon, const QString& toolTip,
               std::function<void()> bringBack);
    ~StatusIcon();
    StatusIcon(const StatusIcon&) = delete;
    StatusIcon& operator=(const StatusIcon&) = delete;

    /// The desktop is told of a change only.
    void setToolTip(const QString& toolTip) {
        if (toolTip != icon_.toolTip()) {
            icon_.setToolTip(toolTip);
        }
    }

    /// Whether the user can see it.
    bool isShown() const;

private:
    QSystemTrayIcon icon_;
};

} // namespace vistrane
