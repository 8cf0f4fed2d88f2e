#include <gtest/gtest.h>

#include "backends/movies/TrackClock.h"

namespace vistrane {
namespace {

TEST(TrackClock, ZeroTellsNoTimescale) {
    TrackClock clock;
    EXPECT_EQ(clock.take(kCMTimeZero).ticks, 0);
    EXPECT_FALSE(clock.timescale());
    EXPECT_EQ(clock.finalTimescale(), 25);
}

TEST(TrackClock, TheFirstTimeOtherThanZeroTellsTheTimescale) {
    TrackClock clock;
    clock.take(kCMTimeZero);
    EXPECT_EQ(clock.take(CMTimeMake(2, 30)).ticks, 2);
    EXPECT_EQ(clock.timescale(), 30);
}

TEST(TrackClock, ZeroWithATimescaleOfItsOwnTellsItForALonelyFrame) {
    TrackClock clock;
    clock.take(CMTimeMake(0, 60));
    EXPECT_EQ(clock.finalTimescale(), 60);
}

TEST(TrackClock, AnEqualOrEarlierTimeIsRefusedAndChangesNothing) {
    TrackClock clock;
    clock.take(CMTimeMake(4, 10));
    EXPECT_TRUE(clock.take(CMTimeMake(4, 10)).error);
    EXPECT_TRUE(clock.take(CMTimeMake(3, 10)).error);
    EXPECT_EQ(clock.take(CMTimeMake(5, 10)).ticks, 5);
}

TEST(TrackClock, AnInvalidTimeIsRefused) {
    TrackClock clock;
    EXPECT_TRUE(clock.take(CMTime{}).error);
    EXPECT_TRUE(clock.take(CMTimeMake(1, -25)).error);
    EXPECT_EQ(clock.take(CMTimeMake(1, 25)).ticks, 1);
}

TEST(TrackClock, AnotherTimescaleIsTakenWhereItFitsExactly) {
    TrackClock clock;
    clock.take(CMTimeMake(1, 10));
    EXPECT_EQ(clock.take(CMTimeMake(10, 50)).ticks, 2);
    EXPECT_TRUE(clock.take(CMTimeMake(11, 50)).error);
    EXPECT_EQ(clock.take(CMTimeMake(1, 1)).ticks, 10);
}

TEST(TrackClock, TimesCountFromTheSessionsStart) {
    TrackClock clock;
    clock.startSession(CMTimeMake(100, 25));
    EXPECT_TRUE(clock.take(CMTimeMake(99, 25)).error);
    EXPECT_EQ(clock.take(CMTimeMake(100, 25)).ticks, 0);
    EXPECT_EQ(clock.take(CMTimeMake(102, 25)).ticks, 2);
}

TEST(TrackClock, TimesBeyondTheFormatAreRefused) {
    TrackClock clock;
    EXPECT_EQ(clock.take(CMTimeMake(TrackClock::lastTick, 25)).ticks, TrackClock::lastTick);
    EXPECT_TRUE(clock.take(CMTimeMake(TrackClock::lastTick + 1, 25)).error);
    EXPECT_TRUE(clock.take(CMTimeMake(INT64_MAX, 1)).error);
    EXPECT_TRUE(clock.take(CMTimeMake(INT64_MIN, 1)).error);
}

} // namespace
} // namespace vistrane
