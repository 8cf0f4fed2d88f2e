#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/soak/CompileFolder.h"
#include "tests/support/Soak.h"

namespace vistrane {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::SizeIs;

/// Disks that are full after a random number of bytes: files that may not grow further, and small
/// file systems where mounting is allowed.
class FullDisk : public CommandLineTest {
protected:
    static std::vector<std::string> limitedFile(int bytes) {
        return {"prlimit", "--fsize=" + std::to_string(bytes)};
    }

    /// Mounts a file system of that size on `folder` and copies the files of `origin` to it. When
    /// the program has ended, copies everything back. Nothing if mounting is not allowed.
    std::optional<std::vector<std::string>> smallDisk(int bytes) const {
        const std::string disk = "'" + folder + "'";
        return mountingLauncher("mount -t tmpfs -o size=" + std::to_string(bytes) + " tmpfs " +
                                disk + " && cp -R '" + origin + "'/. " + disk +
                                " || exit 99\n\"$0\" \"$@\"\nstatus=$?\ncp -R " + disk + "/. '" +
                                origin + "' || exit 98\nexit $status");
    }

    /// In turn.
    std::vector<std::string> launcher(const Soak& soak, int bytes, int bytesOfFiles) const {
        const auto disk = soak.round() % 2 == 0 ? smallDisk(bytes + bytesOfFiles) : std::nullopt;
        return disk ? *disk : limitedFile(bytes);
    }

    std::string origin = work.makeFolder("origin");
};

TEST_F(FullDisk, GivesAWholeMovieOrNoneAndTellsWhy) {
    const CompileFolder frames{origin, {.frames = 24, .width = 320, .height = 240}};
    const Ended unlimited = run({"compile", origin});
    ASSERT_EQ(unlimited.status, 0) << unlimited.errors;
    const auto size = static_cast<int>(std::filesystem::file_size(unlimited.lines().at(0)));
    ASSERT_EQ(frames.check().movies, 1);
    int bytesOfFiles = 0;
    constexpr int page = 4096;
    for (const std::string& name : namesIn(origin)) {
        const auto bytes = static_cast<int>(std::filesystem::file_size(origin + "/" + name));
        bytesOfFiles += (bytes / page + 1) * page;
    }

    int failures = 0;
    Soak soak("compiles to a full disk", {.few = 4, .many = 50});
    while (soak.next()) {
        const int bytes = soak.randomUpTo(size + size / 20);
        SCOPED_TRACE(bytes);
        const auto disk = launcher(soak, bytes, bytesOfFiles);
        // On a disk of its own, the frames are copies at `folder`.
        const bool isSmallDisk = disk.front() != "prlimit";
        const Ended ended = runIn(disk, {"compile", isSmallDisk ? folder : origin});
        const CompileFolder::Found found = frames.check();
        EXPECT_EQ(found.leftovers, 0);
        EXPECT_EQ(found.movies, ended.status == 0 ? 1 : 0);
        if (ended.status != 0) {
            ++failures;
            EXPECT_EQ(ended.status, 1);
            EXPECT_EQ(ended.output, "");
            EXPECT_THAT(ended.errors, HasSubstr("vistrane: The movie cannot be written ("));
            EXPECT_THAT(ended.errors, ContainsRegex("File too large|No space left on device"));
        }
    }
    EXPECT_GT(failures, 0);
    soak.report(std::to_string(soak.round()) + " compiles: " + std::to_string(failures) +
                    " failed with the reason and left nothing, the others gave whole movies",
                !HasFailure());
}

TEST_F(FullDisk, KeepsWholeFramesOnlyAndTellsOfTheLostOnes) {
    const std::vector<std::string> arguments{"--demo-camera", "--device", "Demo Camera",
                                             "--interval", "1"};
    const auto capture = [&](const std::vector<std::string>& disk, const std::string& place,
                             int count) {
        std::vector<std::string> all{"capture", place, "--count", std::to_string(count)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runIn(disk, all);
    };
    // In another time zone, because a still replaces an earlier one of the same second.
    options.environment["TZ"] = "UTC+5";
    const Ended unlimited = capture({}, origin, 1);
    options.environment["TZ"] = "UTC";
    ASSERT_EQ(unlimited.status, 0) << unlimited.errors;
    const std::string first = unlimited.lines().at(0);
    const std::string contents = contentsOf(first);
    const auto size = static_cast<int>(contents.size());

    std::size_t kept = 0;
    std::size_t lost = 0;
    Soak soak("stills to a full disk", {.few = 3, .many = 50});
    while (soak.next()) {
        // Room for some stills on a disk, for one in a file.
        const bool isSmallDisk = soak.round() % 2 == 0;
        const int stills = isSmallDisk ? 3 : 1;
        const int bytes = soak.randomUpTo(stills * size + size / 10);
        SCOPED_TRACE(bytes);
        const auto disk = launcher(soak, bytes, size + 4096);
        const bool isMounted = disk.front() != "prlimit";
        const Ended ended = capture(disk, isMounted ? folder : origin, stills);

        EXPECT_TRUE(contentsOf(first) == contents) << first << " is not what it was";
        auto names = namesIn(origin);
        std::erase(names, std::filesystem::path(first).filename().string());
        for (const std::string& name : names) {
            EXPECT_TRUE(readFrame(origin + "/" + name)) << name;
            std::filesystem::remove(origin + "/" + name);
        }
        const std::size_t failures = count(ended.errors, "A frame is lost: ");
        EXPECT_EQ(failures, count(ended.errors, "File too large") +
                                count(ended.errors, "No space left on device"));
        EXPECT_EQ(ended.status, failures == 0 ? 0 : 1) << ended.errors;
        EXPECT_THAT(names, SizeIs(ended.lines().size()));
        kept += names.size();
        lost += failures;
    }
    EXPECT_GT(lost, 0);
    soak.report(std::to_string(soak.round()) + " captures: " + std::to_string(kept) +
                    " frames, all whole; " + std::to_string(lost) + " lost, each with the reason",
                !HasFailure());
}

} // namespace
} // namespace vistrane
