#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <gtest/gtest.h>

#include "backends/qt/menus/QtMenu.h"
#include "backends/qt/menus/QtMenuItem.h"

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

    void open() const {
        menu_.qtMenu()->popup(QPoint(10, 10));
        ASSERT_TRUE(menu_.qtMenu()->isVisible());
    }

    QtMenu menu_{redSquare};
    Target target_;
    std::vector<NSObject*> senders_;
};

TEST_F(QtMenus, AnAmpersandInATitleIsShownAndIsNoMnemonic) {
    add("Day & Night");
    EXPECT_EQ(firstAction()->text(), "Day && Night");
}

TEST_F(QtMenus, AnEmptyKeyEquivalentIsNoShortcut) {
    add("item");
    EXPECT_TRUE(firstAction()->shortcut().isEmpty());
}

TEST_F(QtMenus, AKeyEquivalentIsPressedWithTheCommandKey) {
    add("item", "q");
    EXPECT_EQ(firstAction()->shortcut(), QKeySequence("Ctrl+Q"));
}

TEST_F(QtMenus, ACapitalKeyEquivalentIsPressedWithShiftToo) {
    add("item", "Q");
    EXPECT_EQ(firstAction()->shortcut(), QKeySequence("Ctrl+Shift+Q"));
}

TEST_F(QtMenus, APictureIsShownAndTakenAway) {
    const auto item = add("item");
    item->setImage(std::make_shared<NoImage>());
    EXPECT_FALSE(firstAction()->icon().isNull());
    EXPECT_TRUE(firstAction()->isIconVisibleInMenu());
    item->setImage(nullptr);
    EXPECT_TRUE(firstAction()->icon().isNull());
}

TEST_F(QtMenus, ASubmenuReplacesAnEarlierOne) {
    const auto item = add("item");
    item->setSubmenu(std::make_shared<QtMenu>(redSquare));
    const auto later = std::make_shared<QtMenu>(redSquare);
    item->setSubmenu(later);
    EXPECT_EQ(firstAction()->menu<QMenu*>(), later->qtMenu());
    item->setSubmenu(nullptr);
    EXPECT_EQ(firstAction()->menu<QMenu*>(), nullptr);
}

TEST_F(QtMenus, AnItemKeepsItsSubmenu) {
    const auto item = add("item");
    auto submenu = std::make_shared<QtMenu>(redSquare);
    const std::weak_ptr<QtMenu> observed = submenu;
    item->setSubmenu(std::move(submenu));
    EXPECT_FALSE(observed.expired());
}

TEST_F(QtMenus, AnItemOfTheInterfaceFileTakesASubmenu) {
    QMenu file;
    QAction* const action = file.addAction("More");
    QtMenuItem item(*action, redSquare);
    const auto submenu = std::make_shared<QtMenu>(redSquare);
    item.setSubmenu(submenu);
    EXPECT_EQ(action->menu<QMenu*>(), submenu->qtMenu());
}

TEST_F(QtMenus, AnItemWhoseMenuIsGoneDoesNothing) {
    auto file = std::make_unique<QMenu>();
    QtMenuItem item(*file->addAction("More"), redSquare);
    file.reset();
    item.setSubmenu(std::make_shared<QtMenu>(redSquare));
    item.setImage(std::make_shared<NoImage>());
    EXPECT_EQ(item.qtAction(), nullptr);
}

TEST_F(QtMenus, AMenuOfTheInterfaceFileThatIsGoneTakesNoItem) {
    auto file = std::make_unique<QMenu>();
    QtMenu menu(*file, redSquare);
    file.reset();
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

TEST_F(QtMenus, CancellingClosesAnOpenMenuWithoutAChoice) {
    add("item")->setTarget(&target_);
    open();
    menu_.qtMenu()->setActiveAction(firstAction());
    menu_.cancelTracking();
    EXPECT_FALSE(menu_.qtMenu()->isVisible());
    EXPECT_TRUE(senders_.empty());
}

TEST_F(QtMenus, CancellingClosesOpenSubmenusToo) {
    const auto submenu = std::make_shared<QtMenu>(redSquare);
    submenu->addItemWithTitle("inner", {}, "");
    add("item")->setSubmenu(submenu);
    open();
    submenu->qtMenu()->popup(QPoint(60, 10));
    ASSERT_TRUE(submenu->qtMenu()->isVisible());
    menu_.cancelTracking();
    EXPECT_FALSE(submenu->qtMenu()->isVisible());
    EXPECT_FALSE(menu_.qtMenu()->isVisible());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
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

} // namespace
} // namespace vistrane
