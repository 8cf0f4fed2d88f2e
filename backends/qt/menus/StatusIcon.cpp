#include "backends/qt/menus/StatusIcon.h"

#include <utility>

namespace vistrane {

StatusIcon::StatusIcon(QMenu& menu, const QIcon& icon, const QString& toolTip,
                       std::function<void()> bringBack)
    : icon_(icon) {
    icon_.setToolTip(toolTip);
    icon_.setContextMenu(&menu);
    QObject::connect(&icon_, &QSystemTrayIcon::activated,
                     [act = std::move(bringBack)](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger && act) {
                             act();
                         }
                     });
    icon_.show();
}

StatusIcon::~StatusIcon() = default;

bool StatusIcon::isShown() const {
    return QSystemTrayIcon::isSystemTrayAvailable() && icon_.isVisible();
}

} // namespace vistrane
