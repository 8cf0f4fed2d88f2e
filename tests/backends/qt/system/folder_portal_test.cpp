#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QTest>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/qt/system/QtOpenPanel.h"
#include "tests/support/FakeServices.h"

namespace vistrane {
namespace {

/// The open panel on a desktop with a portal.
class FolderPortalTest : public ::testing::Test {
protected:
    FolderPortalTest() {
        panel_.setTitle("Select Output Folder to Save the Capture");
        panel_.setCanChooseDirectories(true);
        panel_.setCanChooseFiles(false);
        panel_.setPrompt("Save to This Folder");
    }
    ~FolderPortalTest() override { services_.reset(); }

    /// Runs the panel, and cancels Qt's own dialog if that appears.
    NSModalResponse run() {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [this] {
            if (auto* const own = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                hasQtsDialog_ = true;
                own->reject();
            }
        });
        timer.start(1);
        return panel_.runModal();
    }

    FakeServices& services_ = FakeServices::shared();
    QtRunLoop loop_;
    QtOpenPanel panel_{std::make_shared<const QtDialogRules>(
        QtDialogRules{loop_, [] { return nullptr; }, [](NSView&) { return nullptr; },
                      [] { return std::string("/tmp/my frames \xff"); }})};
    bool hasQtsDialog_ = false;
};

TEST_F(FolderPortalTest, TheDesktopsDialogGetsTheTextsAndGivesThePathAsBytes) {
    services_.offerFolderDialog(0, {"file:///tmp/a%20folder%20%C3%A4%FF"});
    EXPECT_EQ(run(), NSModalResponseOK);
    EXPECT_FALSE(hasQtsDialog_);
    ASSERT_TRUE(panel_.URL());
    EXPECT_EQ(panel_.URL()->path(), "/tmp/a folder \xc3\xa4\xff");
    const auto [title, options] = services_.folderQuestion();
    EXPECT_EQ(title, "Select Output Folder to Save the Capture");
    EXPECT_EQ(options["accept_label"].toString(), "Save to This Folder");
    EXPECT_EQ(options["directory"], true);
    EXPECT_EQ(options["current_folder"].toByteArray(), QByteArray("/tmp/my frames \xff\0", 17));
}

TEST_F(FolderPortalTest, ACancelledDialogGivesNothing) {
    services_.offerFolderDialog(1, {});
    EXPECT_EQ(run(), NSModalResponseCancel);
    EXPECT_FALSE(hasQtsDialog_);
    EXPECT_FALSE(panel_.URL());
}

TEST_F(FolderPortalTest, AFolderThatIsNotOnThisMachineIsChosenWithoutAPath) {
    services_.offerFolderDialog(0, {"sftp://host/folder"});
    EXPECT_EQ(run(), NSModalResponseOK);
    EXPECT_FALSE(panel_.URL());
}

TEST_F(FolderPortalTest, WithoutAUsablePortalQtsDialogAsks) {
    // None; one that is too old; one that refuses; one whose dialog ends by itself.
    EXPECT_EQ(run(), NSModalResponseCancel);
    EXPECT_TRUE(std::exchange(hasQtsDialog_, false));
    for (const auto& [version, response] : {std::pair(2U, 0U), {4U, 2U}}) {
        services_.offerFolderDialog(response, {"file:///tmp"}, version);
        EXPECT_EQ(run(), NSModalResponseCancel);
        EXPECT_TRUE(std::exchange(hasQtsDialog_, false)) << version;
        services_.reset();
    }
    services_.offer("org.freedesktop.portal.Desktop");
    services_.answer("org.freedesktop.DBus.Properties.Get",
                     {QVariant::fromValue(QDBusVariant(4U))});
    EXPECT_EQ(run(), NSModalResponseCancel);
    EXPECT_TRUE(hasQtsDialog_);
}

TEST_F(FolderPortalTest, APortalThatEndsMeanwhileIsReplacedByQtsDialog) {
    services_.offerFolderDialog(std::nullopt, {});
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        QWidget* const blocker = QApplication::activeModalWidget();
        if (blocker != nullptr && services_.countOf("OpenFile") == 1) {
            timer.stop();
            EXPECT_TRUE(blocker->testAttribute(Qt::WA_DontShowOnScreen));
            services_.reset();
        }
    });
    timer.start(1);
    EXPECT_EQ(run(), NSModalResponseCancel);
    EXPECT_TRUE(hasQtsDialog_);
}

} // namespace
} // namespace vistrane
