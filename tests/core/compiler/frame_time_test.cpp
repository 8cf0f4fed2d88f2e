#include <gtest/gtest.h>

#include "core/compiler/frame_time.h"

namespace vistrane {
namespace {

TEST(FrameTime, TheFirstFrameComesAtZero) {
    EXPECT_EQ(framePresentationTime(0, 25), kCMTimeZero);
}

TEST(FrameTime, EveryOtherFrameComesOnePeriodLaterThanItsIndex) {
    EXPECT_EQ(framePresentationTime(1, 25), (CMTime{2, 25}));
    EXPECT_EQ(framePresentationTime(2, 25), (CMTime{3, 25}));
    EXPECT_EQ(framePresentationTime(1, 1), (CMTime{2, 1}));
    EXPECT_EQ(framePresentationTime(99999, 60), (CMTime{100000, 60}));
}

TEST(FrameTime, TheHighestIndexDoesNotOverflow) {
    EXPECT_EQ(framePresentationTime(INT32_MAX, 30), (CMTime{INT64_C(2147483648), 30}));
}

TEST(FrameTime, ARateOfZeroOrLessGivesAnInvalidTime) {
    EXPECT_FALSE(CMTimeIsValid(framePresentationTime(1, 0)));
    EXPECT_FALSE(CMTimeIsValid(framePresentationTime(1, -1)));
}

} // namespace
} // namespace vistrane
