#include <thread>

#include <QCheckBox>
#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QTextDocument>
#include <QToolTip>

#include "backends/qt/controls/PathButton.h"
#include "backends/qt/controls/QtResources.h"
#include "backends/qt/controls/shown_text.h"
#include "tests/backends/qt/controls/ControlWidgets.h"
#include "tests/backends/qt/longest_wait.h"

namespace vistrane {
namespace {

class QtButtonTest : public ControlTest {
protected:
    std::shared_ptr<QtButton> pushButton(const QString& text = {}) {
        auto* const widget = new QPushButton(text, &widgets_.widget());
        widget_ = widget;
        return std::make_shared<QtButton>(*widget);
    }

    QAbstractButton* widget_ = nullptr;
};

TEST_F(QtButtonTest, ATitleIsShownAsTextWithoutAMnemonic) {
    const std::pair<const char*, QString> shown[] = {
        {"/home/you&me", QStringLiteral("/home/you&&me")},
        {"/a\xff\nb", QStringLiteral("/a\uFFFD b")}};
    for (const auto& [title, text] : shown) {
        const auto button = pushButton();
        button->setTitle(title);
        EXPECT_EQ(button->title(), title);
        EXPECT_EQ(widget_->text(), text);
        EXPECT_TRUE(widget_->shortcut().isEmpty());
    }
}

TEST_F(QtButtonTest, TheTitleOfTheInterfaceFileIsReadWithoutItsMnemonic) {
    EXPECT_EQ(pushButton(QStringLiteral("&Start"))->title(), "Start");
    EXPECT_EQ(pushButton(QStringLiteral("Q&&A"))->title(), "Q&A");
}

TEST_F(QtButtonTest, TheShortcutOutlivesATitleOfTheProgram) {
    const auto button = pushButton(QStringLiteral("&Start Auto Capture"));
    button->setAction(count());
    widgets_.show();
    button->setTitle("Stop Auto Capture");
    EXPECT_EQ(widget_->text(), QStringLiteral("&Stop Auto Capture"));
    for (int times = 1; times <= 2; ++times) {
        QTest::keyClick(&widgets_.widget(), Qt::Key_S, Qt::AltModifier);
        // The click is sent after the button was drawn pressed.
        EXPECT_TRUE(QTest::qWaitFor([&] { return sent_ == times; }, longestWait));
        button->setTitle("no such letter: -");
    }
}

TEST_F(QtButtonTest, APushButtonWhoseStateIsOnDoesNotLookPressed) {
    const auto button = pushButton();
    button->setState(NSControlStateValueOn);
    EXPECT_EQ(button->state(), NSControlStateValueOn);
    EXPECT_FALSE(widget_->isChecked());
    EXPECT_FALSE(widget_->isDown());
}

TEST_F(QtButtonTest, AClickTogglesACheckBoxBeforeItsActionIsSent) {
    QCheckBox box;
    QtButton button(box);
    std::vector<NSInteger> states;
    button.setAction([&](NSObject*) { states.push_back(button.state()); });
    box.click();
    box.click();
    EXPECT_THAT(states, ::testing::ElementsAre(1, 0));
    button.setState(NSControlStateValueOn);
    EXPECT_TRUE(box.isChecked());
    EXPECT_THAT(states, ::testing::SizeIs(2));
}

TEST_F(QtButtonTest, AButtonThatAnotherThreadDisabledSendsNothingEvenBeforeItShows) {
    const auto button = pushButton();
    button->setAction(count());
    std::thread([&] { button->setEnabled(false); }).join();
    EXPECT_TRUE(widget_->isEnabled());
    widget_->click();
    EXPECT_EQ(sent_, 0);
    QCoreApplication::processEvents();
    EXPECT_FALSE(widget_->isEnabled());
    std::thread([&] { button->setEnabled(true); }).join();
    QCoreApplication::processEvents();
    widget_->click();
    EXPECT_EQ(sent_, 1);
    EXPECT_EQ(sender_, button.get());
}

TEST_F(QtButtonTest, TheLastCallFromTwoThreadsCounts) {
    const auto button = pushButton();
    std::thread([&] {
        button->setEnabled(true);
        button->setEnabled(false);
    }).join();
    button->setEnabled(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(widget_->isEnabled());
}

TEST_F(QtButtonTest, AButtonMayBeDestroyedWhileACallForItIsPending) {
    auto button = pushButton();
    std::thread([&] { button->setEnabled(false); }).join();
    button.reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(widget_->isEnabled());
}

TEST_F(QtButtonTest, TheAlternateImageShowsWhileTheButtonIsPressed) {
    const QtResources resources;
    const auto button = pushButton();
    const auto shown = [&] { return widget_->icon().pixmap(QSize(32, 32)).toImage(); };
    button->setAlternateImage(resources.imageNamed("play2"));
    EXPECT_TRUE(widget_->icon().isNull());
    button->setImage(resources.imageNamed("play1"));
    const QImage released = shown();
    QTest::mousePress(widget_, Qt::LeftButton);
    const QImage pressed = shown();
    QTest::mouseRelease(widget_, Qt::LeftButton);
    EXPECT_NE(pressed, released);
    EXPECT_EQ(shown(), released);
    button->setImage(nullptr);
    EXPECT_TRUE(widget_->icon().isNull());
}

class PathButtonTest : public ::testing::Test {
protected:
    PathButtonTest() { button_.setToolTip(QStringLiteral("where frames go")); }

    /// The tip of a button that is 150 pixels wide.
    QString toolTipOf(const QString& text) {
        button_.resize(150, 30);
        button_.setText(text);
        QToolTip::hideText();
        button_.show();
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), button_.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&button_, &event);
        return QToolTip::text();
    }
    QImage pictureOf(const QString& text) {
        button_.setText(text);
        return button_.grab().toImage();
    }

    PathButton button_;
};

TEST_F(PathButtonTest, APathThatIsTooLongIsItsOwnTip) {
    EXPECT_EQ(toolTipOf(QStringLiteral("/f")), QStringLiteral("where frames go"));
    EXPECT_EQ(toolTipOf(QStringLiteral("/home/somebody/Pictures/Q&&A/a rather long name")),
              QStringLiteral("/home/somebody/Pictures/Q&A/a rather long name"));
}

TEST_F(PathButtonTest, APathThatLooksLikeMarkedUpTextIsShownAsItIs) {
    const QString path = QStringLiteral("/home/somebody/<b>bold</b>/a  rather & long name");
    QTextDocument shown;
    const QString tip = toolTipOf(withoutMnemonic(path));
    ASSERT_TRUE(Qt::mightBeRichText(tip));
    shown.setHtml(tip);
    EXPECT_EQ(shown.toPlainText(), path);
}

TEST_F(PathButtonTest, ALongPathDoesNotWidenTheWindow) {
    button_.setText(QString(1000, u'x'));
    EXPECT_LE(button_.minimumSizeHint().width(), 120);
    EXPECT_LE(button_.sizeHint().width(), 240);
}

TEST_F(PathButtonTest, APathReadsFromLeftToRightInEveryLanguage) {
    button_.resize(400, 30);
    // Without isolation, the first slash would be drawn at the end.
    for (const QString& path : {QStringLiteral("/home/frames."), QStringLiteral("/123/45."),
                                QString::fromUtf8("/home/\u05d0\u05d1/\u05d2\u05d3.")}) {
        button_.setLayoutDirection(Qt::LeftToRight);
        const QImage picture = pictureOf(path);
        button_.setLayoutDirection(Qt::RightToLeft);
        EXPECT_EQ(pictureOf(path), picture) << path.toStdString();
    }
}

TEST_F(PathButtonTest, BothEndsOfALongPathAreSeen) {
    button_.resize(150, 30);
    const QImage path = pictureOf("/a/Pictures/a rather long name of a folder/frames");
    EXPECT_NE(path, pictureOf("/b/Pictures/a rather long name of a folder/frames"));
    EXPECT_NE(path, pictureOf("/a/Pictures/a rather long name of a folder/trames"));
    EXPECT_EQ(path, pictureOf("/a/Pictures/a rather wide name of a folder/frames"));
}

} // namespace
} // namespace vistrane
