#include "backends/posix/SystemProcessInfo.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <sys/utsname.h>

namespace vistrane {
namespace {

class ProcessInfo : public ::testing::Test {
protected:
    ProcessInfo() {
        std::string name = ::testing::TempDir() + "releaseXXXXXX";
        folder_ = ::mkdtemp(name.data()) != nullptr ? name : std::string();
    }
    ~ProcessInfo() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::string versionOf(const std::string& release) {
        const std::string path = folder_ + "/os-release";
        std::ofstream(path, std::ios::binary) << release;
        return SystemProcessInfo(path).operatingSystemVersionString();
    }

    static std::string kernel() {
        utsname names{};
        uname(&names);
        return std::string(names.sysname) + " " + names.release;
    }

    std::string folder_;
};

TEST_F(ProcessInfo, TellsTheDistributionsNameForItself) {
    EXPECT_EQ(versionOf("NAME=\"Debian GNU/Linux\"\n"
                        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n"),
              "Debian GNU/Linux 12 (bookworm)");
}

TEST_F(ProcessInfo, TakesQuotesAndEscapesAsTheShellDoes) {
    EXPECT_EQ(versionOf("PRETTY_NAME=Plain\n"), "Plain");
    EXPECT_EQ(versionOf("PRETTY_NAME='Single \\ \"quotes\"'\n"), "Single \\ \"quotes\"");
    EXPECT_EQ(versionOf("PRETTY_NAME=\"A \\\"good\\\" one \\$ 'x'\"\n"), "A \"good\" one $ 'x'");
}

TEST_F(ProcessInfo, KeepsLettersOutsideAscii) {
    EXPECT_EQ(versionOf("PRETTY_NAME=\"Système 1\"\n"), "Système 1");
}

TEST_F(ProcessInfo, NeedsNoEndOfTheLastLine) {
    EXPECT_EQ(versionOf("ID=x\nPRETTY_NAME=\"Last\""), "Last");
}

TEST_F(ProcessInfo, OtherKeysThatEndAlikeDoNotCount) {
    EXPECT_EQ(versionOf("# PRETTY_NAME=a\nMY_PRETTY_NAME=b\nPRETTY_NAME=c\n"), "c");
}

TEST_F(ProcessInfo, WithoutANameTellsTheKernels) {
    EXPECT_EQ(versionOf("ID=debian\n"), kernel());
    EXPECT_EQ(versionOf("PRETTY_NAME=\"\"\n"), kernel());
    EXPECT_EQ(versionOf(""), kernel());
    EXPECT_EQ(SystemProcessInfo(folder_ + "/none").operatingSystemVersionString(), kernel());
    EXPECT_EQ(SystemProcessInfo(folder_).operatingSystemVersionString(), kernel());
}

TEST(SystemsOwnProcessInfo, IsNeverEmpty) {
    EXPECT_NE(SystemProcessInfo().operatingSystemVersionString(), "");
}

} // namespace
} // namespace vistrane
