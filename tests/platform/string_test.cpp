#include "platform/foundation/NSString.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(PathExtension, FollowsTheLastDotOfTheLastComponent) {
    EXPECT_EQ(pathExtension("frame.png"), "png");
    EXPECT_EQ(pathExtension("/f/frame.PNG"), "PNG");
    EXPECT_EQ(pathExtension("a.b.png"), "png");
    EXPECT_EQ(pathExtension("two..png"), "png");
    EXPECT_EQ(pathExtension("..png"), "png");
    EXPECT_EQ(pathExtension(".frame.png"), "png");
    EXPECT_EQ(pathExtension("frame.png "), "png ");
}

TEST(PathExtension, IsEmptyWithoutADotInTheLastComponent) {
    for (const char* path :
         {"", ".", "..", "png", "frame.", ".png", "/f/.png", "/f.png/frame", "/f.png/", "/"}) {
        EXPECT_EQ(pathExtension(path), "") << path;
    }
}

} // namespace
} // namespace vistrane
