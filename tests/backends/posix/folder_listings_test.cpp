#include "backends/posix/FolderListings.h"

#include <cstdint>
#include <ctime>
#include <fstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "tests/support/WorkFolder.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;

std::int64_t wallOffset = 0;
std::int64_t monotonicOffset = 0;
/// Of <linux/magic.h>. The file system of every folder.
std::int64_t fileSystem = 0;
/// Whether every folder's times are 0.
bool hasNoTimes = false;

int statusOf(int folder, const char* path, struct stat64* status, int flags) {
    const auto result = static_cast<int>(::syscall(SYS_newfstatat, folder, path, status, flags));
    if (result == 0 && hasNoTimes) {
        status->st_mtim = {};
        status->st_ctim = {};
    }
    return result;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const int result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    const std::int64_t offset = clock == CLOCK_REALTIME_COARSE ? wallOffset
                                : clock == CLOCK_MONOTONIC     ? monotonicOffset
                                                               : 0;
    const std::int64_t now = time->tv_sec * second + time->tv_nsec + offset;
    time->tv_sec = now / second;
    time->tv_nsec = now % second;
    return result;
}

// Large files are on: the calls have these names.
extern "C" int stat64(const char* path, struct stat64* status) noexcept {
    return statusOf(AT_FDCWD, path, status, 0);
}

extern "C" int fstat64(int file, struct stat64* status) noexcept {
    return statusOf(file, "", status, AT_EMPTY_PATH);
}

extern "C" int fstatfs64(int, struct statfs64* status) noexcept {
    *status = {};
    status->f_type = fileSystem;
    return 0;
}

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr std::int64_t ext4 = 0xEF53;
constexpr std::int64_t nfs = 0x6969;

/// Whether a folder is read again shows in the object: the last one is kept.
class FolderListingsTest : public ::testing::Test {
protected:
    FolderListingsTest() {
        wallOffset = 0;
        monotonicOffset = 0;
        fileSystem = ext4;
        hasNoTimes = false;
        add("a.png");
    }

    void add(const std::string& name) const { std::ofstream(folder / name) << "content"; }
    void pass(double seconds) {
        wallOffset += static_cast<std::int64_t>(seconds * second);
        monotonicOffset += static_cast<std::int64_t>(seconds * second);
    }
    bool readsAgain() {
        const auto before = last_;
        last_ = listings.list(folder.path());
        return last_ != before;
    }

    WorkFolder folder;
    FolderListings listings;

private:
    std::shared_ptr<const FileNames> last_;
};

TEST_F(FolderListingsTest, AFolderThatHasJustChangedIsReadEachTime) {
    pass(-1);
    EXPECT_TRUE(readsAgain());
    EXPECT_TRUE(readsAgain());
    EXPECT_TRUE(readsAgain());
}

TEST_F(FolderListingsTest, AnUnchangedFolderIsReadOnceAMinute) {
    pass(0.1);
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
    pass(59.9);
    EXPECT_FALSE(readsAgain());
    pass(0.2);
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
}

TEST_F(FolderListingsTest, AFolderOnAServerIsReadEveryTwoSeconds) {
    fileSystem = nfs;
    pass(3.9);
    EXPECT_TRUE(readsAgain());
    EXPECT_TRUE(readsAgain());
    pass(0.2);
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
    pass(1.9);
    EXPECT_FALSE(readsAgain());
    pass(0.2);
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
}

TEST_F(FolderListingsTest, AFolderWithoutTimesIsReadEachTime) {
    fileSystem = 0x4d44; // FAT
    hasNoTimes = true;
    pass(3600);
    EXPECT_TRUE(readsAgain());
    EXPECT_TRUE(readsAgain());
}

TEST_F(FolderListingsTest, AClockThatIsSetBackIsNotTrusted) {
    pass(3600);
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
    // Later than the folder's change.
    wallOffset -= 30 * second;
    EXPECT_TRUE(readsAgain());
    EXPECT_FALSE(readsAgain());
    // Earlier.
    wallOffset -= 3600 * second;
    EXPECT_TRUE(readsAgain());
    EXPECT_TRUE(readsAgain());
}

TEST_F(FolderListingsTest, AChangeIsSeenAtOnceAlsoIfItHidesItsTime) {
    pass(1);
    EXPECT_THAT(*listings.list(folder.path()), ElementsAre("a.png"));
    struct stat before {};
    ASSERT_EQ(stat(folder.path().c_str(), &before), 0);
    add("b.png");
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, folder.path().c_str(), times, 0), 0);
    EXPECT_THAT(*listings.list(folder.path()), UnorderedElementsAre("a.png", "b.png"));
}

TEST_F(FolderListingsTest, AnotherFolderOfTheSameNameIsSeenAtOnce) {
    const std::string name = folder / "link";
    std::filesystem::create_directory_symlink(folder.makeFolder("first"), name);
    add("second");
    pass(1);
    EXPECT_THAT(*listings.list(name), ElementsAre());
    std::filesystem::remove(name);
    EXPECT_EQ(listings.list(name), nullptr);
    std::filesystem::create_directory_symlink(folder / "second", name);
    EXPECT_EQ(listings.list(name), nullptr);
    std::filesystem::remove(name);
    std::filesystem::create_directory_symlink(folder.path(), name);
    EXPECT_THAT(*listings.list(name), UnorderedElementsAre("a.png", "first", "second", "link"));
}

} // namespace
} // namespace vistrane
