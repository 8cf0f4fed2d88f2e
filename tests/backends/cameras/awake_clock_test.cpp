#include "backends/cameras/AwakeClock.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(AwakeClock, CountsTheTimeInWhichTheProcessRan) {
    AwakeClock clock;
    auto steady = std::chrono::steady_clock::now() + seconds(1);
    const auto start = clock.at(steady);
    for (int step = 0; step < 10; ++step) {
        steady += AwakeClock::longestStep / 2;
        clock.at(steady);
    }
    EXPECT_EQ(clock.at(steady) - start, 10 * (AwakeClock::longestStep / 2));
}

TEST(AwakeClock, APauseOfTheProcessCountsAsOneStep) {
    AwakeClock clock;
    const auto steady = std::chrono::steady_clock::now() + seconds(1);
    const auto start = clock.at(steady);
    EXPECT_EQ(clock.at(steady + std::chrono::hours(8)) - start, AwakeClock::longestStep);
    EXPECT_EQ(clock.at(steady + std::chrono::hours(8) + milliseconds(5)) - start,
              AwakeClock::longestStep + milliseconds(5));
}

TEST(AwakeClock, TellsWhenTheLastPauseEnded) {
    AwakeClock clock;
    const auto steady = std::chrono::steady_clock::now();
    const auto beginning = clock.lastPause();
    clock.at(steady + AwakeClock::longestStep / 2);
    EXPECT_EQ(clock.lastPause(), beginning);
    const auto end = clock.at(steady + seconds(5));
    clock.at(steady + seconds(5) + milliseconds(20));
    EXPECT_EQ(clock.lastPause(), end);
}

} // namespace
} // namespace vistrane
