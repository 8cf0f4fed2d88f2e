#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <gtest/gtest.h>

#include "backends/qt/menus/StatusIcon.h"

namespace vistrane {
namespace {

TEST(StatusIcons, ADesktopWithoutStatusAreaShowsNoneAndNothingFails) {
    ASSERT_FALSE(QSystemTrayIcon::isSystemTrayAvailable());
    QMenu menu;
    QPixmap picture(16, 16);
    picture.fill(Qt::red);
    const StatusIcon icon(menu, picture, "Vistrane", [] {});
    EXPECT_FALSE(icon.isShown());
}

} // namespace
} // namespace vistrane
