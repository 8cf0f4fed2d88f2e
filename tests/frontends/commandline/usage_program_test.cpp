#include <csignal>
#include <utility>

#include "tests/frontends/commandline/CommandLineTest.h"

namespace vistrane {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class UsageProgram : public CommandLineTest {};

TEST_F(UsageProgram, HelpGoesToStandardOutput) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"-h"}, {"compile", "--help"}}) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.output, HasSubstr("vistrane compile FOLDER"));
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(UsageProgram, VersionGoesToStandardOutput) {
    const Ended ended = run({"--version"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, testing::MatchesRegex("vistrane [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(ended.errors, "");
}

TEST_F(UsageProgram, TextThatCannotBePrintedIsAFailureWithItsReason) {
    for (const char* option : {"--help", "--version"}) {
        const Ended full = runIn({"sh", "-c", "exec \"$0\" \"$@\" >/dev/full"}, {option});
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.errors,
                  "vistrane: Cannot write to standard output: No space left on device.\n");
        const Ended closed = runIn({"sh", "-c", "exec \"$0\" \"$@\" >&-"}, {option});
        EXPECT_EQ(closed.status, 1);
        EXPECT_EQ(closed.errors,
                  "vistrane: Cannot write to standard output: Bad file descriptor.\n");
    }
}

TEST_F(UsageProgram, AnInterruptEndsItBeforeThereIsASession) {
    for (const auto& [signal, status] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        // The pipe is full already and is not read.
        const std::string fill = "head -c 65536 /dev/zero; echo full >&2; exec \"$0\" \"$@\"";
        options.outputIsNotRead = true;
        Program program(command({"--help"}, {"sh", "-c", fill}), options);
        ASSERT_TRUE(program.waitForError("full"));
        // The shell handles signals itself: wait until it has been replaced.
        const std::string running = "/proc/" + std::to_string(program.process()) + "/exe";
        while (std::filesystem::read_symlink(running) != VISTRANE_PROGRAM) {
            std::this_thread::yield();
        }
        ASSERT_TRUE(program.waitUntilReadyFor(signal));
        program.signal(signal);
        EXPECT_EQ(program.wait().status, status);
    }
}

TEST_F(UsageProgram, WrongUsageIsTwoWithTheReasonOnStandardError) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--version", "x"},
          {"--convert"},
          {"a", "b"},
          {"frames"},
          {"compile", folder, "--fps"},
          {"capture", folder, "--device", "x", "--interval", "1:60"},
          {"demo", "--fps", "10"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors, StartsWith("vistrane: "));
        EXPECT_THAT(ended.errors, Not(StartsWith("vistrane: \n")));
        EXPECT_THAT(ended.errors, EndsWith(" 'vistrane --help' tells the usage.\n"));
    }
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(UsageProgram, WithoutADisplayNoWindowIsOpened) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"--demo-camera"}, {folder}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "vistrane: There is no display to open a window on. 'vistrane "
                                "--help' tells what can be done without one.\n");
    }
}

TEST_F(UsageProgram, ADisplayThatIsNotThereIsNamed) {
    options.environment["DISPLAY"] = ":4711";
    const Ended ended = run({});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("vistrane: No window can be opened: "));
}

TEST_F(UsageProgram, AWordThatIsNeitherCommandNorFolderIsRefused) {
    const Ended ended = run({"convert"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("/convert': No such file or directory"));
    EXPECT_THAT(ended.errors, HasSubstr("There is no command 'convert' either"));
}

/// Every command that takes a folder, with this one.
std::vector<std::vector<std::string>> commandsFor(const std::string& folder) {
    return {{folder},
            {"--demo-camera", folder},
            {"frames", folder},
            {"compile", folder},
            {"capture", folder, "--demo-camera", "--device", "Demo Camera", "--count", "1"},
            {"demo", folder}};
}

class FolderArgument : public CommandLineTest {
protected:
    void expectRefusal(const std::string& argument, const std::string& reason,
                       const std::vector<std::string>& launcher = {}) {
        for (const auto& arguments : commandsFor(argument)) {
            SCOPED_TRACE(testing::PrintToString(arguments));
            const Ended ended = runIn(launcher, arguments);
            EXPECT_EQ(ended.status, 1);
            EXPECT_EQ(ended.output, "");
            EXPECT_THAT(ended.errors, StartsWith("vistrane: Cannot use the folder '"));
            EXPECT_THAT(ended.errors, HasSubstr(reason));
            EXPECT_EQ(count(ended.errors, "\n"), 1U);
        }
    }
};

TEST_F(FolderArgument, AMissingFolderIsRefusedAndNotMade) {
    expectRefusal(work / "missing", "No such file or directory. Name an existing folder.");
    EXPECT_FALSE(std::filesystem::exists(work / "missing"));
}

TEST_F(FolderArgument, AFolderThatMayNotBeReadIsRefused) {
    const auto launcher = unprivilegedLauncher();
    if (!launcher) {
        GTEST_SKIP() << "There is no user without privileges here.";
    }
    std::filesystem::permissions(work.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder, std::filesystem::perms::none);
    expectRefusal(folder, "Permission denied. Name a folder that you may read.", *launcher);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

} // namespace
} // namespace vistrane
