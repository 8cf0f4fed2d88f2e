#include <memory>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "backends/qt/menus/QtApplication.h"

namespace vistrane {
namespace {

class QtApplications : public ::testing::Test {
protected:
    QtApplications() {
        QMenu* const file = window_.menuBar()->addMenu("File");
        QMenu* const more = file->addMenu("More");
        inner_ = more->addAction("Inner");
        inner_->setShortcut(QKeySequence("Ctrl+I"));
        window_.setCentralWidget(new QLabel("text"));
        application_.setMainWindow(&window_);
    }

    void show() {
        window_.setGeometry(40, 50, 300, 200);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    QMainWindow window_;
    QAction* inner_;
    QtApplication application_{[] { return true; }};
};

TEST_F(QtApplications, AnAccessoryHasNoMenuBar) {
    show();
    ASSERT_TRUE(window_.menuBar()->isVisible());
    EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyAccessory));
    EXPECT_FALSE(window_.menuBar()->isVisible());
    EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyRegular));
    EXPECT_TRUE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, AnAccessoryFromTheStartShowsItsWindowsWithoutMenuBar) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    EXPECT_FALSE(window_.menuBar()->isVisible());
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    EXPECT_TRUE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, AnAccessorysLaterWindowHasNoMenuBarEither) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    QMainWindow later;
    later.menuBar()->addMenu("File");
    later.show();
    EXPECT_FALSE(later.menuBar()->isVisible());
}

TEST_F(QtApplications, AMenuBarThatWasHiddenBeforeStaysHidden) {
    window_.menuBar()->hide();
    show();
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    EXPECT_FALSE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, ShortcutsWorkWithAndWithoutMenuBar) {
    show();
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    QSignalSpy chosen(inner_, &QAction::triggered);
    const auto press = [&] { QTest::keyClick(&window_, Qt::Key_I, Qt::ControlModifier); };
    press();
    EXPECT_EQ(chosen.count(), 1);
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    press();
    EXPECT_EQ(chosen.count(), 2);
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    press();
    EXPECT_EQ(chosen.count(), 3);
}

TEST_F(QtApplications, TheSwitchShowsNoHiddenWindow) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(QtApplications, AWindowThatIsGoneIsNoTrouble) {
    auto other = std::make_unique<QMainWindow>();
    other->menuBar()->addMenu("File");
    other->show();
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    other.reset();
    EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyAccessory));
    EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyRegular));
}

TEST_F(QtApplications, MinimisingTakesEachWindowWithAMinimiseButton) {
    show();
    QMainWindow second;
    second.show();
    QDialog alert;
    alert.show();
    application_.miniaturizeAll(nullptr);
    EXPECT_TRUE(window_.isMinimized());
    EXPECT_TRUE(second.isMinimized());
    EXPECT_FALSE(alert.isMinimized());
}

TEST_F(QtApplications, MinimisingShowsNoHiddenWindow) {
    application_.miniaturizeAll(nullptr);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(QtApplications, ActivatingKeepsTheActiveWindowActive) {
    show();
    QMainWindow second;
    second.show();
    second.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&second));
    application_.activateIgnoringOtherApps(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &second);
}

TEST_F(QtApplications, ActivatingKeepsInFrontTheWindowThatWasJustOrderedThere) {
    show();
    QMainWindow second;
    second.show();
    second.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&second));
    QtApplication::orderFront(window_);
    application_.activateIgnoringOtherApps(true);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &window_);

    // Afterwards it is the user who changes windows.
    second.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&second));
    application_.activateIgnoringOtherApps(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &second);
}

TEST_F(QtApplications, ActivatingShowsNoHiddenOrMinimisedWindow) {
    application_.activateIgnoringOtherApps(true);
    EXPECT_FALSE(window_.isVisible());
    show();
    window_.showMinimized();
    application_.activateIgnoringOtherApps(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window_.isMinimized());
}

} // namespace
} // namespace vistrane
