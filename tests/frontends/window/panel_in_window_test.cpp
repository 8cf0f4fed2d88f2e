#include <vector>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <gtest/gtest.h>

#include "backends/pictures/PictureObserver.h"
#include "backends/pictures/Pictures.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/qt/controls/QtResources.h"
#include "backends/qt/loop/QtRunLoop.h"
#include "backends/sim/Sim.h"
#include "core/infopanel/mantisQRXpanel.h"
#include "frontends/window/WindowAppKit.h"
#include "tests/backends/qt/controls/interface_widgets.h"

namespace vistrane {
namespace {

class Unobserved final : public PictureObserver {};

/// The info panel on the real windows, menus, pictures and alerts.
class PanelInWindow : public ::testing::Test {
protected:
    PanelInWindow() { panel_.connectInterface(interface_.nib("mantisQRXpanel")); }

    template <typename Child>
    Child& child(const char* name) {
        return named<Child>(interface_, name);
    }

    /// Whether the items of a menu have pictures, in order.
    static std::vector<bool> pictures(const QMenu* menu) {
        std::vector<bool> result;
        for (const QAction* item : menu != nullptr ? menu->actions() : QList<QAction*>()) {
            result.push_back(!item->icon().isNull());
        }
        return result;
    }
    /// The submenu of the menu's item with that title.
    static const QMenu* submenu(const QMenu& menu, const QString& title) {
        for (const QAction* item : menu.actions()) {
            if (item->text() == title) {
                return item->menu<QMenu*>();
            }
        }
        return nullptr;
    }

    Sim sim_;
    const Platform simPlatform_ = sim_.platform();
    Unobserved observer_;
    Pictures pictures_{observer_};
    QtRunLoop loop_;
    LeftOutFrames leftOut_;
    QtResources resources_;
    QtInterface interface_{resources_};
    WindowAppKit appKit_{simPlatform_.appKit.sharedApplication(),
                         simPlatform_.appKit.sharedWorkspace(),
                         std::make_shared<const QtDialogRules>(QtDialogRules{
                             loop_, [this] { return &interface_.mainWindow(); }, widgetOf}),
                         resources_,
                         pictures_,
                         loop_,
                         leftOut_};
    const Platform platform_{simPlatform_.foundation,   appKit_,
                             simPlatform_.avFoundation, simPlatform_.coreVideo,
                             simPlatform_.coreGraphics, simPlatform_.dispatch};
    mantisQRXpanel panel_{platform_};
};

TEST_F(PanelInWindow, PromotionsHavePicturesInTheHelpAndTheStatusMenuAndNoneInTheContextMenu) {
    panel_.addingPromoAppsOfmantisQRX({"frameweave", "stillreel"});
    const QString title = child<QAction>("mantisSubmenuM").text();
    using Pictures = std::vector<bool>;
    EXPECT_EQ(pictures(submenu(child<QMenu>("helpMenu"), title)), (Pictures{true, true}));
    EXPECT_EQ(pictures(submenu(interface_.statusMenu(), title)), (Pictures{true, true}));

    interface_.mainWindow().show();
    QMenu* const contextMenu = openContextMenu(interface_);
    ASSERT_NE(contextMenu, nullptr);
    EXPECT_EQ(pictures(submenu(*contextMenu, title)), (Pictures{false, false}));
    contextMenu->close();
}

TEST_F(PanelInWindow, TheTipsTextKeepsItsLeadingBlanksAndItsEmptyLine) {
    panel_.showEasyStartTip(nullptr);
    const auto& text = child<QLabel>("tipText");
    EXPECT_TRUE(text.text().startsWith(QStringLiteral("  Benefit from the quality")));
    EXPECT_TRUE(text.text().contains(QStringLiteral("old Macs.\n\nIf you are")));
    EXPECT_EQ(text.textFormat(), Qt::PlainText);
    EXPECT_EQ(child<QLabel>("picCount").text(), QStringLiteral("1 of 4"));
}

TEST_F(PanelInWindow, TheAutoStartHintShowsItsScreenshot) {
    const auto* const view = dynamic_cast<QtImageView*>(panel_.tipView.get());
    ASSERT_NE(view, nullptr);
    PictureWidget& screenshot = view->widget();
    QWidget* const home = screenshot.parentWidget();
    bool isSeen = false;
    QTimer::singleShot(0, &interface_.mainWindow(), [&] {
        auto* const alert = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(alert, nullptr);
        isSeen =
            alert->isAncestorOf(&screenshot) && screenshot.isVisible() &&
            alert->rect().contains(QRect(screenshot.mapTo(alert, QPoint()), screenshot.size()));
        alert->reject();
    });
    panel_.tipsForAutostart(nullptr);
    EXPECT_TRUE(isSeen);
    EXPECT_EQ(screenshot.parentWidget(), home);
}

} // namespace
} // namespace vistrane
