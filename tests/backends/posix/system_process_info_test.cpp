#include "backends/posix/SystemProcessInfo.h"

#include <fstream>

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "tests/support/WorkFolder.h"

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

    const WorkFolder folder_;
};

TEST_F(ProcessInfo, IsTheDistributionsNameReadAsAShellDoes) {
    const struct {
        const char* release;
        const char* version;
    } cases[] = {
        {"NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n",
         "Debian GNU/Linux 12 (bookworm)"},
        {"PRETTY_NAME=Plain\n", "Plain"},
        {"PRETTY_NAME=\"Système 1\"", "Système 1"}, // without a line end
        {"PRETTY_NAME='Single \\ \"quotes\"'\n", "Single \\ \"quotes\""},
        {"PRETTY_NAME=\"A \\\"good\\\" one \\$ 'x'\"\n", "A \"good\" one $ 'x'"},
        // Other keys with the same end do not count.
        {"# PRETTY_NAME=a\nMY_PRETTY_NAME=b\nPRETTY_NAME=c\n", "c"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(versionOf(each.release), each.version);
    }
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
