#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <gtest/gtest.h>

#include "backends/qt/menus/QtMenu.h"
#include "backends/qt/menus/QtMenuItem.h"
#include "backends/qt/menus/StatusIcon.h"

namespace vistrane {
namespace {

/// A picture without content.
class NoImage final : public NSImage {
public:
    NSSize size() const override { return {}; }
    std::shared_ptr<NSData> TIFFRepresentation() const override { return nullptr; }
    void drawAtPoint(NSPoint, NSRect, NSCompositingOperation, double) const override {}
    void drawInRect(NSRect, NSRect, NSCompositingOperation, double) const override {}
};

class Target final : public NSObject {};

QIcon redSquare(const NSImage& /*image*/) {
    QPixmap square(16, 16);
    square.fill(Qt::red);
    return square;
}

class QtMenus : public ::testing::Test {
protected:
    QAction* firstAction() const { return menu_.qtMenu()->actions().constFirst(); }

    std::shared_ptr<NSMenuItem> add(const std::string& title, const std::string& key = "") {
        return menu_.addItemWithTitle(
            title, [this](NSObject* sender) { senders_.push_back(sender); }, key);
    }

    QtMenu menu_{redSquare};
    Target target_;
    std::vector<NSObject*> senders_;
};

TEST_F(QtMenus, TitlesAreShownAsTextAndKeysPressedWithTheCommandKey) {
    const std::tuple<const char*, const char*, QKeySequence> rows[] = {
        {"", "Day && Night", QKeySequence()},
        {"q", "Day && Night", QKeySequence("Ctrl+Q")},
        {"Q", "Day && Night", QKeySequence("Ctrl+Shift+Q")}};
    for (const auto& [key, text, shortcut] : rows) {
        add("Day & Night", key);
        EXPECT_EQ(menu_.qtMenu()->actions().constLast()->text(), text);
        EXPECT_EQ(menu_.qtMenu()->actions().constLast()->shortcut(), shortcut) << key;
    }
}

TEST_F(QtMenus, APictureIsShownAndRemoved) {
    const auto item = add("item");
    item->setImage(std::make_shared<NoImage>());
    EXPECT_FALSE(firstAction()->icon().isNull());
    EXPECT_TRUE(firstAction()->isIconVisibleInMenu());
    item->setImage(nullptr);
    EXPECT_TRUE(firstAction()->icon().isNull());
}

TEST_F(QtMenus, ASubmenuIsShownAndRemoved) {
    const auto item = add("item");
    const auto submenu = std::make_shared<QtMenu>(redSquare);
    item->setSubmenu(submenu);
    EXPECT_EQ(firstAction()->menu<QMenu*>(), submenu->qtMenu());
    item->setSubmenu(nullptr);
    EXPECT_EQ(firstAction()->menu<QMenu*>(), nullptr);
}

TEST_F(QtMenus, AMenuOfTheInterfaceFileThatIsGoneDoesNothing) {
    auto file = std::make_unique<QMenu>();
    QtMenu menu(*file, redSquare);
    QtMenuItem item(*file->addAction("More"), redSquare);
    file.reset();
    item.setSubmenu(std::make_shared<QtMenu>(redSquare));
    item.setImage(std::make_shared<NoImage>());
    EXPECT_EQ(item.qtAction(), nullptr);
    EXPECT_EQ(menu.addItemWithTitle("item", {}, ""), nullptr);
    menu.cancelTracking();
}

TEST_F(QtMenus, AnEntryDoesNothingWhileADialogIsUp) {
    add("item")->setTarget(&target_);
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    firstAction()->trigger();
    EXPECT_TRUE(senders_.empty());
    dialog.close();
    firstAction()->trigger();
    EXPECT_EQ(senders_.size(), 1U);
}

TEST_F(QtMenus, CancellingClosesAnOpenMenuAndItsSubmenusWithoutAChoice) {
    const auto submenu = std::make_shared<QtMenu>(redSquare);
    submenu->addItemWithTitle("inner", {}, "");
    const auto item = add("item");
    item->setTarget(&target_);
    item->setSubmenu(submenu);
    for (const bool isSubmenuOpen : {false, true}) {
        menu_.qtMenu()->popup(QPoint(10, 10));
        ASSERT_TRUE(menu_.qtMenu()->isVisible());
        if (isSubmenuOpen) {
            submenu->qtMenu()->popup(QPoint(60, 10));
            ASSERT_TRUE(submenu->qtMenu()->isVisible());
        }
        menu_.qtMenu()->setActiveAction(firstAction());
        menu_.cancelTracking();
        EXPECT_FALSE(submenu->qtMenu()->isVisible());
        EXPECT_FALSE(menu_.qtMenu()->isVisible());
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    }
    EXPECT_TRUE(senders_.empty());
}

TEST_F(QtMenus, CancellingAClosedMenuLeavesAnotherOneOpen) {
    add("item");
    QMenu other;
    other.addAction("other");
    other.popup(QPoint(10, 10));
    menu_.cancelTracking();
    EXPECT_TRUE(other.isVisible());
    other.hide();
}

TEST(StatusIcons, ADesktopWithoutStatusAreaShowsNoneAndNothingFails) {
    ASSERT_FALSE(QSystemTrayIcon::isSystemTrayAvailable());
    QMenu menu;
    const StatusIcon icon(menu, redSquare(NoImage()), "Vistrane", [] {});
    EXPECT_FALSE(icon.isShown());
}

} // namespace
} // namespace vistrane
