#include "platform/qt/system/QtOpenPanel.h"

#include <filesystem>

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>

#include <QTimer>
#include <gtest/gtest.h>

#include "tests/qt/system/QtSystemBackend.h"

namespace vistrane {
namespace {

class QtOpenPanelTest : public ::testing::Test {
protected:
    QtOpenPanelTest() {
        panel_.setTitle("Select Output Folder to Save the Capture");
        panel_.setCanChooseDirectories(true);
        panel_.setCanCreateDirectories(true);
        panel_.setCanChooseFiles(false);
        panel_.setPrompt("Save to This Folder");
    }

    /// Runs the panel and calls `act` when it is up.
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

    TemporaryFolder folder_;
    QtSystemBackend backend_;
    QtOpenPanel panel_{backend_.dialogRules()};
};

TEST_F(QtOpenPanelTest, GivesTheChosenFolderWithoutATrailingSlash) {
    std::filesystem::create_directory(folder_ / "a folder \xc3\xa4");
    EXPECT_EQ(choose(folder_ / "a folder \xc3\xa4/"), NSModalResponseOK);
    ASSERT_TRUE(panel_.URL());
    EXPECT_EQ(panel_.URL()->path(), folder_ / "a folder \xc3\xa4");
}

TEST_F(QtOpenPanelTest, TheRootIsAChoice) {
    EXPECT_EQ(choose("/"), NSModalResponseOK);
    ASSERT_TRUE(panel_.URL());
    EXPECT_EQ(panel_.URL()->path(), "/");
}

TEST_F(QtOpenPanelTest, CancelledItGivesNothing) {
    EXPECT_EQ(runWith([](QFileDialog& dialog) { dialog.reject(); }), NSModalResponseCancel);
    EXPECT_FALSE(panel_.URL());
}

TEST_F(QtOpenPanelTest, HasItsTitleAndItsPrompt) {
    runWith([](QFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Select Output Folder to Save the Capture");
        EXPECT_EQ(dialog.labelText(QFileDialog::Accept), "Save to This Folder");
        EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
        EXPECT_FALSE(dialog.testOption(QFileDialog::ReadOnly));
        dialog.reject();
    });
}

TEST_F(QtOpenPanelTest, TimersHoldBackWhileItIsOpen) {
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
