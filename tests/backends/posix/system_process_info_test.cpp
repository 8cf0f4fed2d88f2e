#include "backends/posix/SystemProcessInfo.h"

#include <fstream>

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "tests/backends/posix/TemporaryFolder.h"

namespace vistrane {
namespace {

class ProcessInfo : public ::testing::Test {
protected:
    std::string versionOf(const std::string& release) {
        std::ofstream(folder_ / "os-release", std::ios::binary) << release;
        return SystemProcessInfo(folder_ / "os-release").operatingSystemVersionString();
    }

    static std::string kernel() {
        utsname names{};
        uname(&names);
        return std::string(names.sysname) + " " + names.release;
    }

    const TemporaryFolder folder_;
};

TEST_F(ProcessInfo, IsTheDistributionsNameAndVersion) {
    EXPECT_EQ(versionOf("NAME=\"Debian GNU/Linux\"\n"
                        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n"),
              "Debian GNU/Linux 12 (bookworm)");
}

TEST_F(ProcessInfo, QuotesAndEscapesAreReadAsAShellDoes) {
    EXPECT_EQ(versionOf("PRETTY_NAME=Plain\n"), "Plain");
    EXPECT_EQ(versionOf("PRETTY_NAME=\"Système 1\""), "Système 1"); // Without a line end.
    EXPECT_EQ(versionOf("PRETTY_NAME='Single \\ \"quotes\"'\n"), "Single \\ \"quotes\"");
    EXPECT_EQ(versionOf("PRETTY_NAME=\"A \\\"good\\\" one \\$ 'x'\"\n"), "A \"good\" one $ 'x'");
}

TEST_F(ProcessInfo, OtherKeysWithTheSameEndDoNotCount) {
    EXPECT_EQ(versionOf("# PRETTY_NAME=a\nMY_PRETTY_NAME=b\nPRETTY_NAME=c\n"), "c");
}

TEST_F(ProcessInfo, WithoutANameItIsTheKernels) {
    EXPECT_EQ(versionOf("ID=debian\n"), kernel());
    EXPECT_EQ(versionOf("PRETTY_NAME=\"\"\n"), kernel());
    EXPECT_EQ(versionOf(""), kernel());
    EXPECT_EQ(SystemProcessInfo(folder_ / "none").operatingSystemVersionString(), kernel());
    EXPECT_EQ(SystemProcessInfo(folder_.path()).operatingSystemVersionString(), kernel());
}

TEST(SystemsOwnProcessInfo, IsNeverEmpty) {
    EXPECT_NE(SystemProcessInfo().operatingSystemVersionString(), "");
}

} // namespace
} // namespace vistrane
