#include <QAccessible>
#include <QLabel>

#include "tests/backends/qt/controls/ControlWidgets.h"

namespace vistrane {
namespace {

class QtTextFieldTest : public ControlTest {
protected:
    QtTextFieldTest() {
        field_ = widgets_.make<QtTextField, QLineEdit>();
        other_ = widgets_.make<QtTextField, QLineEdit>();
        field_->setAction(count());
        widgets_.show();
        line_ = &widgets_.widgetOf<QLineEdit>(*field_);
        line_->setFocus();
    }

    void type(const QString& text) {
        line_->selectAll();
        QTest::keyClicks(line_, text);
    }
    void leave() { widgets_.widgetOf<QLineEdit>(*other_).setFocus(); }

    std::shared_ptr<QtTextField> field_, other_;
    QLineEdit* line_ = nullptr;
};

TEST_F(QtTextFieldTest, TypingChangesTheValueAtOnceAndSendsNothing) {
    type(QStringLiteral("75x"));
    EXPECT_EQ(field_->stringValue(), "75x");
    EXPECT_EQ(field_->intValue(), 75);
    EXPECT_EQ(sent_, 0);
}

TEST_F(QtTextFieldTest, TheTextOfAScreenReaderIsTakenAndSendsTheAction) {
    QAccessibleInterface* const reader = QAccessible::queryAccessibleInterface(line_);
    ASSERT_NE(reader, nullptr);
    reader->setText(QAccessible::Value, QStringLiteral("30"));
    EXPECT_EQ(field_->intValue(), 30);
    EXPECT_EQ(sent_, 1);
    field_->setStringValue("31");
    EXPECT_EQ(line_->text(), QStringLiteral("31"));
    EXPECT_EQ(sent_, 1);
}

TEST_F(QtTextFieldTest, EnterSendsTheActionOnceWithOrWithoutAnEdit) {
    QTest::keyClick(line_, Qt::Key_Enter);
    EXPECT_EQ(sent_, 1);
    type(QStringLiteral("7"));
    QTest::keyClick(line_, Qt::Key_Return);
    EXPECT_EQ(sent_, 2);
    EXPECT_EQ(sender_, field_.get());
    EXPECT_EQ(line_->selectedText(), QStringLiteral("7"));
    leave();
    EXPECT_EQ(sent_, 2);
}

TEST_F(QtTextFieldTest, LeavingTheFieldSendsTheActionOnlyAfterAnEdit) {
    leave();
    EXPECT_EQ(sent_, 0);
    line_->setFocus();
    type(QStringLiteral("7"));
    leave();
    EXPECT_EQ(sent_, 1);
    line_->setFocus();
    leave();
    EXPECT_EQ(sent_, 1);
}

TEST_F(QtTextFieldTest, SettingAValueDiscardsTheEdit) {
    type(QStringLiteral("7"));
    field_->setStringValue("5");
    leave();
    EXPECT_EQ(sent_, 0);
    EXPECT_EQ(line_->text(), QStringLiteral("5"));
    EXPECT_EQ(field_->intValue(), 5);
}

TEST_F(QtTextFieldTest, AnActionThatCorrectsTheFieldIsSentOnce) {
    field_->setAction([this](NSObject*) {
        ++sent_;
        field_->setIntValue(59);
    });
    type(QStringLiteral("75"));
    QTest::keyClick(line_, Qt::Key_Return);
    leave();
    EXPECT_EQ(sent_, 1);
    EXPECT_EQ(line_->text(), QStringLiteral("59"));
}

TEST_F(QtTextFieldTest, AWindowWithoutAFirstResponderEndsTheEdit) {
    QtWindow window(widgets_.widget());
    window.addField(field_);
    type(QStringLiteral("7"));
    EXPECT_EQ(sent_, 0);
    EXPECT_TRUE(line_->hasFocus());
    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    EXPECT_EQ(sent_, 1);
    EXPECT_FALSE(line_->hasFocus());
    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    leave();
    EXPECT_EQ(sent_, 1);
}

TEST_F(QtTextFieldTest, BytesThatAreNoTextAreKeptAndShownAsReplacements) {
    field_->setStringValue("7\xff");
    EXPECT_EQ(field_->stringValue(), "7\xff");
    EXPECT_EQ(line_->text(), QStringLiteral("7\uFFFD"));
    EXPECT_EQ(field_->intValue(), 7);
}

TEST(QtLabel, ShowsTheTextAsItIsWithItsLines) {
    QLabel widget(QStringLiteral("before"));
    QtLabel label(widget);
    EXPECT_EQ(label.stringValue(), "before");
    label.setStringValue("<b>1 & 2</b>\n3");
    EXPECT_EQ(widget.text(), QStringLiteral("<b>1 & 2</b>\n3"));
    EXPECT_EQ(widget.textFormat(), Qt::PlainText);
}

} // namespace
} // namespace vistrane
