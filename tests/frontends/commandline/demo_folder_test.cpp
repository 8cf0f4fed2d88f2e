#include "frontends/commandline/demo_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

using testing::HasSubstr;

class DemoFolderTest : public testing::Test {
protected:
    DemoFolderTest() {
        ::setenv("HOME", home_.c_str(), 1);
        ::unsetenv("XDG_CONFIG_HOME");
    }

    void writeList(const std::string& text) const {
        std::filesystem::create_directories(home_ / ".config");
        std::ofstream(home_ / ".config" / "user-dirs.dirs") << text;
    }

    WorkFolder folder_;
    const std::filesystem::path home_ = folder_.path();
};

TEST_F(DemoFolderTest, VideosIsInTheHomeFolderWithoutAList) {
    EXPECT_EQ(videosFolder(), home_ / "Videos");
}

TEST_F(DemoFolderTest, TheListNamesTheFolder) {
    writeList("# comment\nXDG_MUSIC_DIR=\"$HOME/M\"\nXDG_VIDEOS_DIR=\"$HOME/My Films\"\n");
    EXPECT_EQ(videosFolder(), home_ / "My Films");
    writeList("XDG_VIDEOS_DIR=\"/films\"\n");
    EXPECT_EQ(videosFolder(), "/films");
}

TEST_F(DemoFolderTest, ADamagedListIsIgnored) {
    writeList("XDG_VIDEOS_DIR=\"relative\"\nXDG_VIDEOS_DIR=\"\nXDG_VIDEOS_DIR=\"\"\n");
    EXPECT_EQ(videosFolder(), home_ / "Videos");
}

TEST_F(DemoFolderTest, EachFolderIsNew) {
    const auto first = createDemoFolder(videosFolder());
    const auto second = createDemoFolder(videosFolder());
    EXPECT_TRUE(std::filesystem::is_directory(first.path)) << first.error;
    EXPECT_TRUE(std::filesystem::is_directory(second.path)) << second.error;
    EXPECT_NE(first.path, second.path);
}

TEST_F(DemoFolderTest, AParentThatCannotBeCreatedIsNamed) {
    std::ofstream(home_ / "Videos") << "a file";
    const auto result = createDemoFolder(videosFolder());
    EXPECT_EQ(result.path, "");
    EXPECT_THAT(result.error, HasSubstr(videosFolder()));
}

} // namespace
} // namespace vistrane
