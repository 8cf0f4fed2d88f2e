#include <limits>

#include <QProgressBar>

#include "backends/qt/controls/QtProgressIndicator.h"
#include "tests/backends/qt/controls/ControlWidgets.h"

namespace vistrane {
namespace {

class QtWindowTest : public ControlTest {
protected:
    QtWindow window_{widgets_.widget()};
};

TEST_F(QtWindowTest, ItComesToTheFrontEvenWhenMinimised) {
    window_.makeKeyAndOrderFront(nullptr);
    EXPECT_TRUE(widgets_.widget().isVisible());
    widgets_.widget().showMinimized();
    window_.makeKeyAndOrderFront(nullptr);
    EXPECT_FALSE(widgets_.widget().isMinimized());
    EXPECT_TRUE(widgets_.widget().isVisible());
}

TEST_F(QtWindowTest, TheTitleIsShownAsText) {
    window_.setTitle("Vistrane v0.1.0 & \xff");
    EXPECT_EQ(widgets_.widget().windowTitle(), QStringLiteral("Vistrane v0.1.0 & \uFFFD"));
}

TEST_F(QtWindowTest, TheDelegateIsNotifiedOfEachCloseOfAnOpenWindow) {
    window_.setWillCloseAction(count());
    widgets_.widget().close();
    EXPECT_EQ(sent_, 0);
    for (int times = 1; times <= 2; ++times) {
        widgets_.show();
        EXPECT_EQ(sent_, times - 1);
        widgets_.widget().close();
        EXPECT_EQ(sent_, times);
        EXPECT_EQ(sender_, &window_);
    }
}

class QtProgressIndicatorTest : public ::testing::Test {
protected:
    double part() const { return static_cast<double>(bar_.value()) / bar_.maximum(); }

    QProgressBar bar_;
    QtProgressIndicator indicator_{bar_};
};

TEST_F(QtProgressIndicatorTest, ValuesBelowTheRangeAndNoNumberShowAsNothing) {
    indicator_.setMaxValue(4.0);
    for (const double value : {-1.0, std::numeric_limits<double>::quiet_NaN()}) {
        indicator_.setDoubleValue(4.0);
        indicator_.setDoubleValue(value);
        EXPECT_DOUBLE_EQ(part(), 0.0);
    }
}

TEST_F(QtProgressIndicatorTest, TheBarIsNotFullBeforeTheLastOfManyThousands) {
    indicator_.setMaxValue(100000.0);
    indicator_.setDoubleValue(99999.0);
    EXPECT_LT(part(), 1.0);
    indicator_.setDoubleValue(100000.0);
    EXPECT_DOUBLE_EQ(part(), 1.0);
}

TEST_F(QtProgressIndicatorTest, AnEmptyRangeIsAnEmptyBarAndNotABusyOne) {
    indicator_.setMaxValue(0.0);
    indicator_.setDoubleValue(1.0);
    EXPECT_GT(bar_.maximum(), bar_.minimum());
    EXPECT_DOUBLE_EQ(part(), 0.0);
}

} // namespace
} // namespace vistrane
