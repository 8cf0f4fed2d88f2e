#include "frontends/commandline/project_folder_argument.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

using testing::HasSubstr;

class ProjectFolderArgumentTest : public testing::Test {
protected:
    ProjectFolderArgumentTest() {
        std::filesystem::create_directory(root_ / "frames");
        std::filesystem::current_path(root_);
    }
    ~ProjectFolderArgumentTest() override { std::filesystem::current_path(before_); }

    WorkFolder folder_;
    const std::filesystem::path root_ = folder_.path();
    const std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(ProjectFolderArgumentTest, ARelativeFolderBecomesAbsolute) {
    EXPECT_EQ(projectFolderArgument("frames").path, root_ / "frames");
    EXPECT_EQ(projectFolderArgument(".").path, root_);
}

TEST_F(ProjectFolderArgumentTest, SlashesAndDotsAreRemoved) {
    EXPECT_EQ(projectFolderArgument("./frames//").path, root_ / "frames");
    EXPECT_EQ(projectFolderArgument("frames/../frames/.").path, root_ / "frames");
    EXPECT_EQ(projectFolderArgument("//" + root_.string()).path, root_);
}

TEST_F(ProjectFolderArgumentTest, ALinkIsKept) {
    std::filesystem::create_directory_symlink("frames", "link");
    EXPECT_EQ(projectFolderArgument("link").path, root_ / "link");
}

TEST_F(ProjectFolderArgumentTest, BytesThatAreNotUtf8AreKept) {
    const std::string name = "bad\xff\nname";
    std::filesystem::create_directory(name);
    EXPECT_EQ(projectFolderArgument(name).path, root_.native() + "/" + name);
}

TEST_F(ProjectFolderArgumentTest, AMissingFolderIsNamedAndNotCreated) {
    const auto result = projectFolderArgument("nowhere");
    EXPECT_EQ(result.path, "");
    EXPECT_THAT(result.error, HasSubstr((root_ / "nowhere").native()));
    EXPECT_THAT(result.error, HasSubstr("No such file or directory"));
    EXPECT_FALSE(std::filesystem::exists("nowhere"));
}

TEST_F(ProjectFolderArgumentTest, ARefusalIsOneLineOfTextWhateverTheName) {
    const std::string error = projectFolderArgument("no\nwhere\x1b\xff").error;
    EXPECT_THAT(error, HasSubstr("no\xEF\xBF\xBDwhere\xEF\xBF\xBD\xEF\xBF\xBD'"));
    EXPECT_EQ(error.find('\n'), std::string::npos);
}

TEST_F(ProjectFolderArgumentTest, AFileIsRefused) {
    std::ofstream("file") << "x";
    EXPECT_THAT(projectFolderArgument("file").error, HasSubstr("Not a directory"));
}

TEST_F(ProjectFolderArgumentTest, ALinkToNothingOrToItselfIsRefused) {
    std::filesystem::create_symlink("missing", "dangling");
    std::filesystem::create_symlink("loop", "loop");
    EXPECT_THAT(projectFolderArgument("dangling").error, HasSubstr("No such file or directory"));
    EXPECT_THAT(projectFolderArgument("loop").error, HasSubstr("Too many levels"));
}

TEST_F(ProjectFolderArgumentTest, TheRootIsRefusedUnderEveryName) {
    std::filesystem::create_directory_symlink("/", "root");
    for (const char* name : {"/", "//", "/.", "/..", "/usr/..", "root"}) {
        EXPECT_THAT(projectFolderArgument(name).error, HasSubstr("not a valid working folder"))
            << name;
    }
}

} // namespace
} // namespace vistrane
