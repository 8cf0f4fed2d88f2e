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
#include "tests/backends/qt/longest_wait.h"

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
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_, longestWait));
    }
    void leaveMenuBar() {
        EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyAccessory));
    }
    void takeMenuBar() {
        EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyRegular));
    }
    static void activate(QMainWindow& window) {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window, longestWait));
    }
    QWidget* activeAfterActivating() {
        application_.activateIgnoringOtherApps(true);
        QCoreApplication::processEvents();
        return QApplication::activeWindow();
    }

    QMainWindow window_;
    QAction* inner_;
    QtApplication application_{[] { return true; }};
};

TEST_F(QtApplications, AnAccessorysWindowsHaveNoMenuBar) {
    show();
    ASSERT_TRUE(window_.menuBar()->isVisible());
    leaveMenuBar();
    EXPECT_FALSE(window_.menuBar()->isVisible());
    QMainWindow later;
    later.menuBar()->addMenu("File");
    later.show();
    EXPECT_FALSE(later.menuBar()->isVisible());
    takeMenuBar();
    EXPECT_TRUE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, AnAccessoryFromTheStartShowsItsWindowsWithoutMenuBar) {
    leaveMenuBar();
    EXPECT_FALSE(window_.isVisible());
    show();
    EXPECT_FALSE(window_.menuBar()->isVisible());
    takeMenuBar();
    EXPECT_TRUE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, AMenuBarThatWasHiddenBeforeStaysHidden) {
    window_.menuBar()->hide();
    show();
    leaveMenuBar();
    takeMenuBar();
    EXPECT_FALSE(window_.menuBar()->isVisible());
}

TEST_F(QtApplications, ShortcutsWorkWithAndWithoutMenuBar) {
    activate(window_);
    QSignalSpy chosen(inner_, &QAction::triggered);
    const auto press = [&] { QTest::keyClick(&window_, Qt::Key_I, Qt::ControlModifier); };
    press();
    EXPECT_EQ(chosen.count(), 1);
    leaveMenuBar();
    press();
    EXPECT_EQ(chosen.count(), 2);
    takeMenuBar();
    press();
    EXPECT_EQ(chosen.count(), 3);
}

TEST_F(QtApplications, NothingShowsAHiddenWindow) {
    leaveMenuBar();
    takeMenuBar();
    application_.miniaturizeAll(nullptr);
    application_.activateIgnoringOtherApps(true);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(QtApplications, AWindowThatIsGoneIsNoTrouble) {
    auto other = std::make_unique<QMainWindow>();
    other->menuBar()->addMenu("File");
    other->show();
    leaveMenuBar();
    other.reset();
    leaveMenuBar();
    takeMenuBar();
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

TEST_F(QtApplications, ActivatingKeepsTheActiveWindowActive) {
    show();
    QMainWindow second;
    activate(second);
    EXPECT_EQ(activeAfterActivating(), &second);
    // Unless another one was just ordered to the front.
    QtApplication::orderFront(window_);
    application_.activateIgnoringOtherApps(true);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_, longestWait));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &window_);
    // Afterwards it is the user who changes windows.
    activate(second);
    EXPECT_EQ(activeAfterActivating(), &second);
}

TEST_F(QtApplications, ActivatingShowsNoMinimisedWindow) {
    show();
    window_.showMinimized();
    activeAfterActivating();
    EXPECT_TRUE(window_.isMinimized());
}

} // namespace
} // namespace vistrane
