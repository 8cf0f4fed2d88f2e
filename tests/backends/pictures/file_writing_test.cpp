#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

class FileWriting : public PicturesTest {
protected:
    bool write(const Bytes& bytes, const std::string& path) {
        return DataBytes::copyOf(bytes, &observer_)->writeToFile(path, false);
    }
};

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Simulates a full disk: files cannot grow beyond `length` bytes.
class FullDisk {
public:
    explicit FullDisk(rlim_t length) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = before_;
        limit.rlim_cur = length;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

TEST_F(FileWriting, TheBytesReplaceTheFilesAndAreReported) {
    put(folder_ / "a", Bytes(1000, 1));
    for (const Bytes& bytes : {Bytes(100000, 42), Bytes()}) {
        EXPECT_TRUE(write(bytes, folder_ / "a"));
        EXPECT_EQ(get(folder_ / "a"), bytes);
    }
    EXPECT_THAT(observer_.written, ElementsAre(folder_ / "a", folder_ / "a"));
    EXPECT_THAT(observer_.unwritten, IsEmpty());
    EXPECT_THAT(folder_.names(), ElementsAre("a"));
}

TEST_F(FileWriting, ANewFileHasTheUsersUsualRights) {
    const mode_t before = ::umask(027);
    write(Bytes(10, 2), folder_ / "a");
    ::umask(before);
    struct stat state {};
    ASSERT_EQ(::stat((folder_ / "a").c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 07777, 0640U);
}

TEST_F(FileWriting, AMissingFolderIsReportedWithPathAndReason) {
    const std::string path = folder_ / "none/a.png";
    EXPECT_FALSE(write(Bytes(10, 2), path));
    ASSERT_EQ(observer_.unwritten.size(), 1U);
    EXPECT_EQ(observer_.unwritten[0].first, path);
    EXPECT_EQ(observer_.unwritten[0].second.code, ENOENT);
    EXPECT_THAT(observer_.unwritten[0].second.localizedDescription, HasSubstr(path));
    EXPECT_THAT(observer_.written, IsEmpty());
}

TEST_F(FileWriting, AFolderThatMayNotBeWrittenToIsReported) {
    ::chmod(folder_.path().c_str(), 0500);
    if (::access(folder_.path().c_str(), W_OK) == 0) {
        GTEST_SKIP() << "this user may write everywhere";
    }
    EXPECT_FALSE(write(Bytes(10, 2), folder_ / "a"));
    ::chmod(folder_.path().c_str(), 0700);
    EXPECT_EQ(observer_.unwritten.at(0).second.code, EACCES);
}

TEST_F(FileWriting, PathsThatAreNoFilesAreRefusedAndLeftAlone) {
    const std::string fifo = folder_ / "fifo";
    const std::string directory = folder_.makeFolder("directory");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string paths[] = {fifo, directory, "", {"a\0b", 3}, "/dev/full", "/dev/null"};
    for (const std::string& path : paths) {
        EXPECT_FALSE(write(Bytes(10, 2), path)) << path;
    }
    const int reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_FALSE(write(Bytes(10, 2), fifo));
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 0);
    ::close(reader);
    EXPECT_EQ(observer_.unwritten.size(), 7U);
    EXPECT_EQ(folder_.names().size(), 2U);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(FileWriting, AFullDiskLeavesNoHalfFileAlsoBehindALink) {
    folder_.makeFolder("real");
    ASSERT_EQ(::symlink("real/b", (folder_ / "link").c_str()), 0);
    for (const char* name : {"a", "link"}) {
        const FullDisk disk(5000);
        EXPECT_FALSE(write(Bytes(100000, 2), folder_ / name));
        EXPECT_EQ(observer_.unwritten.back().second.code, EFBIG);
    }
    EXPECT_THAT(folder_.names(), ElementsAre("link", "real"));
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "real"));
}

TEST_F(FileWriting, ALinkIsFollowedAndTheFileKeepsItsIdentity) {
    put(folder_ / "b", Bytes(3, 1));
    ASSERT_EQ(::symlink("b", (folder_ / "a").c_str()), 0);
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(::stat((folder_ / "b").c_str(), &before), 0);
    EXPECT_TRUE(write(Bytes(5, 2), folder_ / "a"));
    ASSERT_EQ(::stat((folder_ / "b").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(after.st_size, 5);
}

} // namespace
} // namespace vistrane::testing
