#include "frontends/commandline/RoomWarning.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

TEST(RoomWarning, ComesOnceBelowAHundredFramesAndOnceBelowTen) {
    RoomWarning warning;
    for (int frames = 300; frames >= 0; --frames) {
        const auto sentence =
            warning.frameWasSaved(1000, static_cast<std::uint64_t>(frames) * 1000 + 999);
        EXPECT_EQ(sentence.has_value(), frames == 99 || frames == 9) << frames;
        if (sentence) {
            EXPECT_THAT(*sentence, testing::StartsWith("The disk has room for " +
                                                       std::to_string(frames) + " more frames"));
        }
    }
}

TEST(RoomWarning, ComesAgainAfterThereWasRoom) {
    RoomWarning warning;
    EXPECT_TRUE(warning.frameWasSaved(1, 5));
    EXPECT_FALSE(warning.frameWasSaved(1, 50));
    EXPECT_FALSE(warning.frameWasSaved(1, 5));
    EXPECT_FALSE(warning.frameWasSaved(1, 100));
    EXPECT_TRUE(warning.frameWasSaved(1, 99));
    EXPECT_TRUE(warning.frameWasSaved(1, 9));
}

TEST(RoomWarning, NeedsAFrameWithASize) {
    RoomWarning warning;
    EXPECT_FALSE(warning.frameWasSaved(0, 0));
}

TEST(FileRoom, IsThatOfTheFilesDisk) {
    const WorkFolder work;
    const std::string path = work.path() + "/frame";
    std::ofstream(path) << "12345";
    const auto room = fileRoom(path);
    ASSERT_TRUE(room);
    EXPECT_EQ(room->size, 5U);
    EXPECT_FALSE(fileRoom(work.path() + "/missing"));
}

} // namespace
} // namespace vistrane
