#include "backends/qt/controls/SignWidget.h"

#include <utility>
#include <vector>

#include <QAccessible>
#include <QApplication>
#include <QMainWindow>
#include <QTest>
#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Records what assistive technologies are told; without a display there are none.
class RecordingSign final : public SignWidget {
public:
    using SignWidget::SignWidget;

    std::vector<QAccessible::Event> takeTold() { return std::exchange(told_, {}); }

protected:
    void tell(QAccessible::Event type) override { told_.push_back(type); }

private:
    std::vector<QAccessible::Event> told_;
};

class SignWidgetTest : public ::testing::Test {
protected:
    SignWidgetTest() {
        window_.setCentralWidget(new QWidget);
        sign_ = new RecordingSign(window_);
        window_.resize(700, 300);
        window_.show();
    }

    QImage picture() const { return sign_->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    /// Whether a part of the line has more red than green and blue.
    bool isReddish(const QRect& part) const {
        const QImage image = picture();
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                if (colour.red() > colour.green() + 40 && colour.red() > colour.blue() + 40) {
                    return true;
                }
            }
        }
        return false;
    }
    QRect half(bool isFirst) const {
        const int middle = sign_->width() / 2;
        return isFirst ? QRect(0, 0, middle, sign_->height())
                       : QRect(middle, 0, sign_->width() - middle, sign_->height());
    }

    QMainWindow window_;
    RecordingSign* sign_ = nullptr;
};

TEST_F(SignWidgetTest, AnEmptyLineKeepsItsPlaceAndShowsNothing) {
    const int height = sign_->height();
    EXPECT_GE(height, sign_->fontMetrics().height());
    EXPECT_FALSE(isReddish(sign_->rect()));
    sign_->show("Capturing", "Capturing", {});
    EXPECT_EQ(sign_->height(), height);
    EXPECT_TRUE(isReddish(half(true)));
    EXPECT_FALSE(isReddish(half(false)));
    sign_->clear();
    EXPECT_FALSE(isReddish(sign_->rect()));
}

TEST_F(SignWidgetTest, FromRightToLeftTheDotIsAtTheRight) {
    window_.setLayoutDirection(Qt::RightToLeft);
    sign_->show("On", "On", {});
    EXPECT_FALSE(isReddish(half(true)));
    EXPECT_TRUE(isReddish(half(false)));
}

TEST_F(SignWidgetTest, ALongTextDoesNotWidenTheWindowAndLeavesTheWarningItsRoom) {
    const int least = window_.minimumSizeHint().width();
    sign_->show(QString(500, 'x'), "x", "3 not saved");
    QApplication::processEvents();
    EXPECT_EQ(window_.minimumSizeHint().width(), least);
    EXPECT_TRUE(isReddish(half(false)));
    EXPECT_TRUE(sign_->toolTip().endsWith("xx, 3 not saved"));
}

TEST_F(SignWidgetTest, ScreenReadersReadTheTextOfTheMomentAndAreToldOfCalmChangesOnly) {
    const QAccessibleInterface* const access = QAccessible::queryAccessibleInterface(sign_);
    ASSERT_NE(access, nullptr);
    sign_->show("next in 2 s, 1 saved", "1 saved", {});
    EXPECT_THAT(sign_->takeTold(), ElementsAre(QAccessible::NameChanged));
    sign_->show("next in 1 s, 1 saved", "1 saved", {});
    EXPECT_THAT(sign_->takeTold(), IsEmpty());
    EXPECT_EQ(access->text(QAccessible::Name), "next in 1 s, 1 saved");
    sign_->show("next in 2 s, 1 saved", "1 saved", "1 not saved");
    EXPECT_THAT(sign_->takeTold(), ElementsAre(QAccessible::NameChanged, QAccessible::Alert));
    EXPECT_EQ(access->text(QAccessible::Name), "next in 2 s, 1 saved, 1 not saved");
    sign_->show("next in 2 s, 1 saved", "1 saved", "2 not saved");
    EXPECT_THAT(sign_->takeTold(), ElementsAre(QAccessible::NameChanged));
    EXPECT_EQ(sign_->focusPolicy(), Qt::NoFocus);
}

} // namespace
} // namespace vistrane
