#include "core/preview/play_period.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(PlayPeriod, IsAQuotientOfSmallFloatsMadeWide) {
    EXPECT_EQ(playPeriod(30.0F), 0.03333333507180214);
    EXPECT_EQ(playPeriod(25.0F), 0.03999999910593033);
    EXPECT_EQ(playPeriod(24.0F), 0.0416666679084301);
    EXPECT_EQ(playPeriod(2.5F), static_cast<double>(0.4F));
    EXPECT_EQ(playPeriod(1.0F), 1.0);
}

} // namespace
} // namespace vistrane
