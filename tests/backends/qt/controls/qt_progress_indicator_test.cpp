#include "backends/qt/controls/QtProgressIndicator.h"

#include <limits>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(QtProgressIndicator, TellsFramesPercentAndTimeLeft) {
    EXPECT_EQ(progressText(12.0, 150.0, 1.0), "12 of 150 frames, 8 %");
    EXPECT_EQ(progressText(12.0, 150.0, 2.0), "12 of 150 frames, 8 %, about 25 s left");
    EXPECT_EQ(progressText(75.0, 150.0, 89.0), "75 of 150 frames, 50 %, about 90 s left");
    EXPECT_EQ(progressText(75.0, 150.0, 100.0), "75 of 150 frames, 50 %, about 2 min left");
    EXPECT_EQ(progressText(1.0, 1000.0, 3600.0), "1 of 1000 frames, 0 %, about 999 h left");
    EXPECT_EQ(progressText(149.0, 150.0, 100.0), "149 of 150 frames, 99 %, about 5 s left");
    EXPECT_EQ(progressText(0.0, 150.0, 100.0), "");
    EXPECT_EQ(progressText(150.0, 150.0, 100.0), "");
    EXPECT_EQ(progressText(std::numeric_limits<double>::quiet_NaN(), 1.0, 100.0), "");
}

TEST(QtProgressIndicator, TheWordsAreInToolTipAndDescriptionUntilTheEnd) {
    QProgressBar bar;
    bar.setToolTip("usual tip");
    bar.setAccessibleDescription("usual description");
    QtProgressIndicator indicator(bar);
    indicator.setMaxValue(1000.0);
    indicator.setDoubleValue(120.0);
    EXPECT_TRUE(bar.toolTip().startsWith("120 of 1000 frames, 12 %"));
    EXPECT_TRUE(bar.accessibleDescription().startsWith("120 of 1000 frames, 12 %"));
    // Of the same percent: not worth an event.
    indicator.setDoubleValue(121.0);
    EXPECT_TRUE(bar.toolTip().startsWith("121 of"));
    EXPECT_TRUE(bar.accessibleDescription().startsWith("120 of"));
    indicator.setDoubleValue(0.0);
    EXPECT_EQ(bar.toolTip(), "usual tip");
    EXPECT_EQ(bar.accessibleDescription(), "usual description");
}

} // namespace
} // namespace vistrane
