#include "backends/qt/system/QtOpenPanel.h"

#include <filesystem>

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/backends/qt/system/QtSystemBackend.h"
#include "tests/contract/contract.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::Not;

class QtOpenPanelTest : public ::testing::Test {
protected:
    QtOpenPanelTest() {
        panel_.setTitle("Select Output Folder to Save the Capture");
        panel_.setCanChooseDirectories(true);
        panel_.setCanCreateDirectories(true);
        panel_.setCanChooseFiles(false);
        panel_.setPrompt("Save to This Folder");
    }

    /// Runs the panel and calls `act` when it is shown.
    NSModalResponse runWith(const std::function<void(QFileDialog&)>& act) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (dialog != nullptr) {
                timer.stop();
                act(*dialog);
            }
        });
        timer.start(1);
        return panel_.runModal();
    }

    NSModalResponse choose(const std::string& path) {
        return runWith([&path](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
            QMetaObject::invokeMethod(&dialog, "accept");
        });
    }

    /// Runs the panel in the test's folder, calls `act` once its only subfolder, "frames", is
    /// listed and selected, and cancels.
    void runInFolder(const std::function<void(QFileDialog&, QAbstractItemView&)>& act) {
        folder_.makeFolder("frames");
        bool isShown = false;
        runWith([&](QFileDialog& dialog) {
            dialog.setViewMode(QFileDialog::List);
            dialog.setDirectory(QString::fromStdString(folder_.path()));
            auto* const view = dialog.findChild<QAbstractItemView*>("listView");
            isShown = contract::runUntil(backend_.foundation(), [view] {
                return view->model()->rowCount(view->rootIndex()) == 1;
            });
            if (isShown) {
                view->setCurrentIndex(view->model()->index(0, 0, view->rootIndex()));
                act(dialog, *view);
            }
            dialog.reject();
        });
        EXPECT_TRUE(isShown);
    }

    WorkFolder folder_;
    QtSystemBackend backend_;
    QtOpenPanel panel_{backend_.dialogRules()};
};

TEST_F(QtOpenPanelTest, GivesTheChosenFolderWithoutATrailingSlash) {
    const std::string folder = folder_.makeFolder("a folder \xc3\xa4");
    for (const auto& [chosen, given] : {std::pair(folder + "/", folder), {"/", "/"}}) {
        EXPECT_EQ(choose(chosen), NSModalResponseOK);
        ASSERT_TRUE(panel_.URL());
        EXPECT_EQ(panel_.URL()->path(), given);
    }
}

TEST_F(QtOpenPanelTest, HasItsTitleAndItsPromptAndGivesNothingWhenCancelled) {
    const NSModalResponse response = runWith([](QFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Select Output Folder to Save the Capture");
        EXPECT_EQ(dialog.labelText(QFileDialog::Accept), "Save to This Folder");
        EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
        EXPECT_FALSE(dialog.testOption(QFileDialog::ReadOnly));
        // Nothing can be dragged elsewhere.
        for (const char* const name : {"listView", "treeView"}) {
            const auto* const view = dialog.findChild<QAbstractItemView*>(name);
            ASSERT_NE(view, nullptr);
            EXPECT_EQ(view->dragDropMode(), QAbstractItemView::NoDragDrop);
        }
        dialog.reject();
    });
    EXPECT_EQ(response, NSModalResponseCancel);
    EXPECT_FALSE(panel_.URL());
}

TEST_F(QtOpenPanelTest, ItsMenuOffersANewFolderButNeitherToRenameNorToDelete) {
    runInFolder([](QFileDialog& dialog, QAbstractItemView& view) {
        QStringList offered;
        QTimer::singleShot(0, &dialog, [&offered] {
            QWidget* const menu = QApplication::activePopupWidget();
            ASSERT_NE(menu, nullptr);
            for (const QAction* const action : menu->actions()) {
                if (action->isVisible()) {
                    offered << action->objectName();
                }
            }
            menu->close();
        });
        emit view.customContextMenuRequested(view.visualRect(view.currentIndex()).center());
        EXPECT_THAT(offered, Contains("qt_new_folder_action"));
        EXPECT_THAT(offered, Not(Contains("qt_rename_action")));
        EXPECT_THAT(offered, Not(Contains("qt_delete_action")));
    });
}

TEST_F(QtOpenPanelTest, NoKeyDeletesOrRenames) {
    runInFolder([](QFileDialog& dialog, QAbstractItemView& view) {
        const auto shortcuts = dialog.findChildren<QShortcut*>();
        int count = 0;
        for (const QShortcut* const shortcut : shortcuts) {
            if (shortcut->key() == QKeySequence("Delete")) {
                ++count;
                EXPECT_FALSE(shortcut->isEnabled());
            }
        }
        EXPECT_GT(count, 0);
        QKeyEvent rename(QEvent::KeyPress, Qt::Key_F2, Qt::NoModifier);
        QApplication::sendEvent(&view, &rename);
        EXPECT_EQ(view.findChild<QLineEdit*>(), nullptr);
    });
    EXPECT_TRUE(std::filesystem::exists(folder_ / "frames"));
}

TEST_F(QtOpenPanelTest, ANewFolderCanBeGivenItsName) {
    runInFolder([](QFileDialog& dialog, QAbstractItemView& view) {
        dialog.findChild<QAction*>("qt_new_folder_action")->trigger();
        auto* const name = view.findChild<QLineEdit*>();
        ASSERT_NE(name, nullptr);
        name->setText("mine");
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(name, &enter);
        QApplication::processEvents();
    });
    EXPECT_TRUE(std::filesystem::exists(folder_ / "mine"));
}

TEST_F(QtOpenPanelTest, ATypedNameOfANewFolderIsTaken) {
    const std::string name = folder_ / "new one";
    EXPECT_EQ(choose(name), NSModalResponseOK);
    EXPECT_TRUE(std::filesystem::is_directory(name));
    ASSERT_TRUE(panel_.URL());
    EXPECT_EQ(panel_.URL()->path(), name);
}

TEST_F(QtOpenPanelTest, ItStartsInTheFolderOfTheRules) {
    QtOpenPanel panel(std::make_shared<const QtDialogRules>(
        QtDialogRules{backend_.loop(), [] { return nullptr; }, [](NSView&) { return nullptr; },
                      [this] { return folder_.path(); }}));
    panel.setCanChooseDirectories(true);
    panel.setCanChooseFiles(false);
    QString start;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            start = dialog->directory().path();
            dialog->reject();
        }
    });
    timer.start(1);
    panel.runModal();
    EXPECT_EQ(start.toStdString(), folder_.path());
}

TEST_F(QtOpenPanelTest, TimersAreSuspendedWhileItIsOpen) {
    int ticks = 0;
    int ticksWhileUp = -1;
    const auto timer = backend_.foundation().scheduledTimerWithTimeInterval(
        0.005, [&](NSTimer&) { ++ticks; }, true);
    runWith([&](QFileDialog& dialog) {
        const int before = ticks;
        QTimer::singleShot(100, &dialog, [&dialog, &ticks, &ticksWhileUp, before] {
            ticksWhileUp = ticks - before;
            dialog.reject();
        });
    });
    EXPECT_EQ(ticksWhileUp, 0);
    timer->invalidate();
}

} // namespace
} // namespace vistrane
