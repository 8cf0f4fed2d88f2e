#include "tests/frontends/commandline/CommandLineTest.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FramesProgram : public CommandLineTest {
protected:
    void writeFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            writeFile(folder + "/" + name, "");
        }
    }

    void writeMoreThanAPipeHolds() const {
        for (int number = 0; number < 1000; ++number) {
            writeFiles({std::to_string(number) + std::string(200, 'x') + ".png"});
        }
    }

    std::vector<std::string> paths(std::vector<std::string> names) const {
        for (std::string& name : names) {
            name = folder + "/" + name;
        }
        return names;
    }
};

TEST_F(FramesProgram, NumbersAreComparedByValueCaseAndWidthAreIgnored) {
    writeFiles({"frame10.png", "frame9.png", "Frame1.png", "frame2.png", "\xef\xbd\x86rame3.png",
                ".hidden.png"});
    for (const char* locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8"}) {
        options.environment["LC_ALL"] = locale;
        const Ended ended = run({"frames", folder});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "");
        EXPECT_EQ(ended.lines(), paths({".hidden.png", "Frame1.png", "frame2.png",
                                        "\xef\xbd\x86rame3.png", "frame9.png", "frame10.png"}));
    }
}

TEST_F(FramesProgram, ALocaleWithoutUtf8CausesNoMessage) {
    writeFiles({"a.png"});
    for (const char* locale : {"C", "en_US.ISO-8859-1", "no locale"}) {
        options.environment["LC_ALL"] = locale;
        const Ended ended = run({"frames", folder});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(FramesProgram, OnlyTheExtensionDecides) {
    writeFiles({"a.PNG", "b.Png", "c.jpg", "png", "d.png~", "e.png.part", "f.tar.png"});
    std::filesystem::create_directory(folder + "/g.png");
    EXPECT_EQ(run({"frames", folder}).lines(), paths({"f.tar.png", "g.png"}));
}

TEST_F(FramesProgram, AnEmptyFolderHasNoFramesAndATerminalGetsNoBell) {
    for (const bool isTerminal : {false, true}) {
        options.errorsGoToTerminal = isTerminal;
        const Ended ended = run({"frames", folder});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(FramesProgram, NulBytesEndThePathsOfNamesWithAnything) {
    const std::string longest = std::string(251, 'x') + ".png";
    const std::string notText = "\xff\xfe.png";
    writeFiles({"a\nb.png", "b c.png", "d%s%n%@.png", longest, notText});
    const Ended ended = run({"frames", folder, "--null"});
    EXPECT_EQ(ended.status, 0);
    std::string expected;
    for (const std::string& path :
         paths({"a\nb.png", "b c.png", "d%s%n%@.png", longest, notText})) {
        expected += path + '\0';
    }
    EXPECT_EQ(ended.output, expected);
}

TEST_F(FramesProgram, TheFolderIsWrittenInFullWithoutDetours) {
    writeFiles({"a.png"});
    std::filesystem::create_directory_symlink(folder, work / "link");
    options.folder = work.path();
    for (const char* argument : {"a folder", "a folder/", "./a folder//.", "home/../a folder"}) {
        EXPECT_THAT(run({"frames", argument}).lines(), ElementsAre(folder + "/a.png"));
    }
    EXPECT_THAT(run({"frames", "link"}).lines(), ElementsAre(work / "link/a.png"));
    options.folder = folder;
    EXPECT_THAT(run({"frames", "."}).lines(), ElementsAre(folder + "/a.png"));
}

TEST_F(FramesProgram, AFolderThatLooksLikeAnOptionFollowsTwoDashes) {
    writeFile(work.makeFolder("--null") + "/a.png", "");
    options.folder = work.path();
    EXPECT_THAT(run({"frames", "--", "--null"}).lines(), ElementsAre(work / "--null/a.png"));
}

TEST_F(FramesProgram, AReaderThatLeavesEndsIt) {
    writeMoreThanAPipeHolds();
    Program program(command({"frames", folder}), options);
    EXPECT_THAT(program.nextLine().value_or(""), HasSubstr("/0x"));
    program.closeOutput();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "vistrane: Cannot write to standard output: Broken pipe.\n");
}

TEST_F(FramesProgram, AFullDeviceIsAFailure) {
    writeFiles({"a.png"});
    const Ended ended = runIn({"sh", "-c", "exec \"$0\" \"$@\" >/dev/full"}, {"frames", folder});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors,
              "vistrane: Cannot write to standard output: No space left on device.\n");
}

TEST_F(FramesProgram, AnInterruptReachesItWhileNobodyReads) {
    writeMoreThanAPipeHolds();
    options.outputIsNotRead = true;
    Program program(command({"frames", folder}), options);
    ASSERT_TRUE(program.waitUntilReadyFor(SIGINT));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait().status, 130);
}

} // namespace
} // namespace vistrane
