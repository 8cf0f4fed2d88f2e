#include "backends/qt/controls/MessageBar.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QToolButton>
#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

class MessageBarTest : public ::testing::Test {
protected:
    MessageBarTest() {
        window_.setCentralWidget(new QWidget);
        bar_ = new MessageBar(window_);
        window_.resize(700, 300);
        window_.show();
    }

    /// The text that the bar shows; empty if it is hidden.
    std::string shown() const {
        for (const QLabel* const label : bar_->findChildren<QLabel*>()) {
            if (bar_->isVisible() && !label->text().isEmpty()) {
                return label->text().toStdString();
            }
        }
        return "";
    }
    void click(const std::string& button) {
        for (QToolButton* const each : bar_->findChildren<QToolButton*>()) {
            if (each->text().toStdString() == button) {
                each->click();
                return;
            }
        }
        FAIL() << "no button " << button;
    }
    void close() { click(""); }

    /// Its button's title is its text in capitals, and adds that to `clicked_`.
    BarMessage notice(const std::string& text) {
        const std::string title = QString::fromStdString(text).toUpper().toStdString();
        return {text, false, title, [this, title] { clicked_ += title; }};
    }

    QMainWindow window_;
    MessageBar* bar_ = nullptr;
    std::string clicked_;
};

TEST_F(MessageBarTest, WarningsAreShownOneAfterAnother) {
    bar_->showMessage({"one"});
    bar_->showMessage({"two"});
    bar_->showMessage({"one"});
    EXPECT_EQ(shown(), "one");
    close();
    EXPECT_EQ(shown(), "two");
    close();
    EXPECT_EQ(shown(), "");
}

TEST_F(MessageBarTest, AShownNoticeMakesRoomForTheNextMessage) {
    bar_->showMessage(notice("one"));
    bar_->showMessage(notice("two"));
    EXPECT_EQ(shown(), "two");
    bar_->showMessage({"three"});
    EXPECT_EQ(shown(), "three");
    close();
    EXPECT_EQ(shown(), "");
}

TEST_F(MessageBarTest, OfTheNoticesThatWaitOnlyTheLastIsShown) {
    bar_->showMessage({"warning"});
    bar_->showMessage(notice("first movie"));
    bar_->showMessage({"other warning"});
    bar_->showMessage(notice("second movie"));
    EXPECT_EQ(shown(), "warning");
    close();
    EXPECT_EQ(shown(), "other warning");
    close();
    EXPECT_EQ(shown(), "second movie");
    close();
    EXPECT_EQ(shown(), "");
}

TEST_F(MessageBarTest, WhatIsShownIsWhatItsButtonActsOn) {
    bar_->showMessage({"first warning"});
    bar_->showMessage(notice("old"));
    bar_->showMessage({"second warning"});
    close();
    EXPECT_EQ(shown(), "old");
    // Makes room while another message waits already.
    bar_->showMessage(notice("new"));
    EXPECT_EQ(shown(), "second warning");
    close();
    EXPECT_EQ(shown(), "new");
    click("NEW");
    EXPECT_EQ(clicked_, "NEW");
    EXPECT_EQ(shown(), "");
}

TEST_F(MessageBarTest, ALongNameDoesNotWidenTheWindow) {
    bar_->showMessage({"short"});
    QApplication::processEvents();
    const int least = window_.minimumSizeHint().width();
    const std::string name(200, 'x');
    bar_->showMessage({"Not in the movie: /home/" + name + "/" + name + "/a.png, b.png"});
    close();
    QApplication::processEvents();
    EXPECT_EQ(window_.minimumSizeHint().width(), least);
    EXPECT_THAT(shown(), StartsWith("Not in the movie: /home/xxx"));
    EXPECT_THAT(shown(), EndsWith("xxx/a.png, b.png"));
    EXPECT_LT(shown().size(), 150U);
    // Screen readers get all of it.
    EXPECT_GT(bar_->accessibleName().size(), 400);
}

} // namespace
} // namespace vistrane
