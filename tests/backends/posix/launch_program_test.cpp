#include "backends/posix/launch_program.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "backends/posix/Descriptor.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

int statusOf(std::vector<std::string> command) {
    std::promise<int> ended;
    launchProgram(std::move(command), [&ended](int status) { ended.set_value(status); });
    return ended.get_future().get();
}

TEST(LaunchProgram, ReportsTheExitStatus) {
    EXPECT_EQ(statusOf({"true"}), 0);
    EXPECT_EQ(statusOf({"sh", "-c", "exit 7"}), 7);
    EXPECT_EQ(statusOf({"sh", "-c", "kill -TERM $$"}), 128 + SIGTERM);
    EXPECT_EQ(statusOf({"vistrane-there-is-no-such-program"}), 127);
}

TEST(LaunchProgram, PassesArgumentsUnchanged) {
    const WorkFolder folder;
    const std::string argument = "a b'\"\n\xff$HOME";
    EXPECT_EQ(statusOf({"sh", "-c", "printf %s \"$1\" > \"$2\"", "sh", argument, folder / "out"}),
              0);
    std::ifstream file(folder / "out", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), argument);
}

TEST(LaunchProgram, NoSignalIsBlockedOrIgnoredInIt) {
    std::signal(SIGPIPE, SIG_IGN);
    // If the signal were blocked or ignored, the status would be 0.
    EXPECT_EQ(statusOf({"sh", "-c", "kill -INT $$; exit 0"}), 128 + SIGINT);
    EXPECT_EQ(statusOf({"sh", "-c", "kill -PIPE $$; exit 0"}), 128 + SIGPIPE);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(LaunchProgram, HasItsOwnSessionAndNoneOfOurStreams) {
    EXPECT_EQ(statusOf({"sh", "-c",
                        "test \"$(ps -o sid= -p $$ | tr -d ' ')\" = $$ && "
                        "test \"$(readlink /proc/$$/fd/2)\" = /dev/null"}),
              0);
}

TEST(LaunchProgram, InheritsNoDescriptor) {
    const WorkFolder folder;
    const Descriptor inheritable(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_TRUE(inheritable.isOpen());
    EXPECT_EQ(statusOf({"test", "-e", "/proc/self/fd/" + std::to_string(inheritable.number())}), 1);
}

} // namespace
} // namespace vistrane
