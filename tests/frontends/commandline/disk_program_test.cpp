#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// Disks that a movie cannot be written to.
class DiskProgram : public CommandLineTest {
protected:
    DiskProgram() {
        FrameForm form;
        form.width = 320;
        form.height = 240;
        form.isNoise = true;
        for (int number = 0; number < 30; ++number) {
            form.colour[0] = number;
            writeFrame(frames + "/f" + std::to_string(number) + ".png", form);
        }
    }

    /// Mounts a new disk at `folder` with those options, links the frames into it, runs the shell
    /// command `prepare`, then the program. `listing` gets the disk's entries.
    /// Null when mounting is not allowed.
    std::optional<Ended> runOnDisk(const std::string& mountOptions, const std::string& prepare,
                                   const std::vector<std::string>& arguments) {
        const std::string script = "mount -t tmpfs -o " + mountOptions + " tmpfs '" + folder +
                                   "' && ln -s '" + frames + "'/*.png '" + folder + "' && " +
                                   prepare + " || exit 99\n\"$0\" \"$@\"\nstatus=$?\n" + "ls -A '" +
                                   folder + "' >'" + listing + "'\nexit $status";
        const auto launcher = mountingLauncher(script);
        return launcher ? std::optional(runIn(*launcher, arguments)) : std::nullopt;
    }

    std::string frames = work.makeFolder("frames");
    std::string listing = work / "listing";
};

TEST_F(DiskProgram, AFullDiskIsNamedAndNothingIsLeftOnIt) {
    const auto ended = runOnDisk("size=500k", "true", {"compile", folder, "--crf", "0"});
    if (!ended) {
        GTEST_SKIP() << "Nothing can be mounted here.";
    }
    EXPECT_EQ(ended->status, 1);
    EXPECT_EQ(ended->output, "");
    EXPECT_THAT(ended->errors, StartsWith("vistrane: The movie cannot be written (" + folder));
    EXPECT_THAT(ended->errors, HasSubstr("No space left on device. Free some space"));
    EXPECT_THAT(ended->errors, Not(HasSubstr("Not in the movie")));
    EXPECT_THAT(ended->errors, Not(HasSubstr("frames went into the movie")));
    EXPECT_EQ(count(contentsOf(listing), "\n"), 30U);
    EXPECT_THAT(contentsOf(listing), Not(HasSubstr("mov")));
}

TEST_F(DiskProgram, AReadOnlyDiskIsRefusedWithOneAlert) {
    const auto ended =
        runOnDisk("size=500k", "mount -o remount,ro '" + folder + "'", {"compile", folder});
    if (!ended) {
        GTEST_SKIP() << "Nothing can be mounted here.";
    }
    EXPECT_EQ(ended->status, 1);
    EXPECT_EQ(ended->output, "");
    EXPECT_EQ(count(ended->errors, "Vistran movie compiling error:\n"), 1U);
    EXPECT_THAT(ended->errors, HasSubstr("Read-only file system"));
    EXPECT_EQ(count(contentsOf(listing), "\n"), 30U);
}

TEST_F(DiskProgram, AFullDiskLosesTheFrameAndLeavesNoHalfOne) {
    const auto ended = runOnDisk("size=20k", "true",
                                 {"capture", folder, "--demo-camera", "--device", "Demo Camera",
                                  "--interval", "1", "--count", "2"});
    if (!ended) {
        GTEST_SKIP() << "Nothing can be mounted here.";
    }
    EXPECT_EQ(ended->status, 1);
    EXPECT_EQ(count(ended->errors, "A frame is lost: "), 2U);
    EXPECT_THAT(ended->errors, HasSubstr("No space left on device"));
}

TEST_F(DiskProgram, ADiskWithRoomForFewFramesIsTold) {
    const auto ended = runOnDisk("size=3m", "true",
                                 {"capture", folder, "--demo-camera", "--device", "Demo Camera",
                                  "--interval", "1", "--count", "2"});
    if (!ended) {
        GTEST_SKIP() << "Nothing can be mounted here.";
    }
    EXPECT_EQ(ended->status, 0);
    EXPECT_EQ(count(ended->errors, "The disk has room for "), 1U);
}

TEST_F(DiskProgram, AFileThatMayNotGrowIsNamedAndRemoved) {
    const auto before = namesIn(frames);
    const Ended ended =
        runIn({"sh", "-c", "ulimit -f 800; exec \"$0\" \"$@\""}, {"compile", frames, "--crf", "0"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("File too large"));
    EXPECT_EQ(namesIn(frames), before);
}

TEST_F(DiskProgram, AFolderThatMayNotBeWrittenIsRefusedWithOneAlert) {
    const auto launcher = unprivilegedLauncher();
    if (!launcher) {
        GTEST_SKIP() << "There is no user without privileges here.";
    }
    std::filesystem::permissions(work.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(frames, std::filesystem::perms(0555));
    const auto before = namesIn(frames);
    const Ended ended = runIn(*launcher, {"compile", frames});
    std::filesystem::permissions(frames, std::filesystem::perms(0755));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(count(ended.errors, "Vistran movie compiling error:\n"), 1U);
    EXPECT_THAT(ended.errors, HasSubstr("Permission denied"));
    EXPECT_EQ(namesIn(frames), before);
}

} // namespace
} // namespace vistrane
