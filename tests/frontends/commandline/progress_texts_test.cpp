#include "frontends/commandline/progress_texts.h"

#include <gtest/gtest.h>

#include "frontends/commandline/log_lines.h"

namespace vistrane {
namespace {

using namespace std::chrono_literals;

TEST(CompileProgress, HasFramesRateAndTimeLeft) {
    EXPECT_EQ(compileProgress(300, 600, 10s), "300 of 600 frames, 30/s, 0:10 left");
    EXPECT_EQ(compileProgress(1, 101, 2s), "1 of 101 frames, 0.5/s, 3:20 left");
    EXPECT_EQ(compileProgress(10, 100000, 10s), "10 of 100000 frames, 1.0/s, 27:46:30 left");
    EXPECT_EQ(compileProgress(600, 600, 10s), "600 of 600 frames, 60/s, 0:00 left");
}

TEST(CompileProgress, IsNotEstimatedAtFirst) {
    EXPECT_EQ(compileProgress(0, 600, 10s), "0 of 600 frames");
    EXPECT_EQ(compileProgress(20, 600, 499ms), "20 of 600 frames");
    EXPECT_EQ(compileProgress(20, 600, 500ms), "20 of 600 frames, 40/s, 0:15 left");
}

TEST(CaptureProgress, HasStillsAndTheTimeToTheNext) {
    EXPECT_EQ(captureProgress({0, 0, std::nullopt, 5s}), "0 saved, next in 0:05");
    EXPECT_EQ(captureProgress({12, 0, 100, 4.01s}), "12 of 100 saved, next in 0:05");
    EXPECT_EQ(captureProgress({212, 3, std::nullopt, 3723s}), "212 saved, 3 lost, next in 1:02:03");
}

TEST(CaptureProgress, TheNextStillIsOnTheGridOfTheInterval) {
    EXPECT_DOUBLE_EQ(timeToNext(0s, 5s).count(), 5.0);
    EXPECT_DOUBLE_EQ(timeToNext(4500ms, 5s).count(), 0.5);
    EXPECT_DOUBLE_EQ(timeToNext(5s, 5s).count(), 5.0);
    EXPECT_DOUBLE_EQ(timeToNext(123s, 10s).count(), 7.0);
}

TEST(LogLines, OfACompileAreDetails) {
    for (const char* line :
         {"\nmoviePath=/f/a.mov", "finished writing", "failed appending #1 buffer",
          "failed append buffer with error: x", "error:adaptor not ready when i=3",
          "treating frame again at: /f/a.png", "CVPixelBufferRef could not create context",
          "deviceInputWithDevice: failed (x)"}) {
        EXPECT_TRUE(isDetail(line)) << line;
    }
}

TEST(LogLines, OfALossAreWarnings) {
    EXPECT_FALSE(isDetail("photoOutput error: the camera is gone"));
    EXPECT_TRUE(isLostStill("photoOutput error: the camera is gone"));
    EXPECT_FALSE(isDetail("A thread could not be started"));
    EXPECT_FALSE(isLostStill("A thread could not be started"));
}

} // namespace
} // namespace vistrane
