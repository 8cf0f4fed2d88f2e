#include "tests/contract/FileManagerContract.h"

#include <sys/stat.h>

#include "tests/backends/posix/PosixFileManagerBackend.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, PosixFileManagerBackend,
                               contract::Names);

namespace {

class PosixFileManagerTest : public ::testing::Test {
protected:
    PosixFileManagerBackend backend_;
    PosixFileManager& manager_ = backend_.manager;
    const std::string folder_ = backend_.emptyFolder();
};

TEST_F(PosixFileManagerTest, LinksAreFollowed) {
    backend_.addFolder(folder_ + "/folder");
    std::filesystem::create_symlink(folder_ + "/folder", folder_ + "/link");
    bool isDirectory = false;
    EXPECT_TRUE(manager_.fileExistsAtPath(folder_ + "/link", isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_TRUE(manager_.contentsOfDirectoryAtPath(folder_ + "/link"));
}

TEST_F(PosixFileManagerTest, ALinkToNothingDoesNotExistButIsListed) {
    std::filesystem::create_symlink(folder_ + "/nothing", folder_ + "/link");
    bool isDirectory = true;
    EXPECT_FALSE(manager_.fileExistsAtPath(folder_ + "/link", isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_THAT(*manager_.contentsOfDirectoryAtPath(folder_), ::testing::ElementsAre("link"));
}

TEST_F(PosixFileManagerTest, APipeIsNoFolderAndDoesNotBlock) {
    ASSERT_EQ(mkfifo((folder_ + "/pipe.png").c_str(), 0600), 0);
    bool isDirectory = true;
    EXPECT_TRUE(manager_.fileExistsAtPath(folder_ + "/pipe.png", isDirectory));
    EXPECT_FALSE(isDirectory);
    EXPECT_FALSE(manager_.contentsOfDirectoryAtPath(folder_ + "/pipe.png"));
}

TEST_F(PosixFileManagerTest, APathWithAZeroByteOrThatIsTooLongNamesNothing) {
    for (const std::string& path :
         {folder_ + std::string("\0/x", 3), folder_ + "/" + std::string(100000, 'x')}) {
        bool isDirectory = true;
        EXPECT_FALSE(manager_.fileExistsAtPath(path, isDirectory));
        EXPECT_FALSE(manager_.contentsOfDirectoryAtPath(path));
    }
}

} // namespace
} // namespace vistrane
