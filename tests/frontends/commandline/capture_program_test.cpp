#include <algorithm>
#include <csignal>
#include <set>
#include <string>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class CaptureProgram : public CommandLineTest {
protected:
    std::vector<std::string> captureArguments(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"capture", folder, "--demo-camera", "--device",
                                           "Demo Camera"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    Ended capture(const std::vector<std::string>& more) const {
        return run(captureArguments(more));
    }

    /// Checks that the folder contains complete frames of the demo camera only.
    void expectWholeFramesOnly() const {
        for (const std::string& name : namesIn(folder)) {
            EXPECT_THAT(name, MatchesRegex("[0-9][0-9](-[0-9][0-9]){5}\\.png"));
            const auto frame = readFrame(folder + "/" + name);
            ASSERT_TRUE(frame) << name;
            EXPECT_EQ(frame->width, 1280);
            EXPECT_EQ(frame->height, 720);
        }
    }

    /// The printed paths. Of two stills that a busy machine saves within a second, the second one
    /// replaces the first.
    static std::vector<std::string> savedPaths(const Ended& ended) {
        std::vector<std::string> paths = ended.lines();
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        return paths;
    }

    std::vector<std::string> framePaths() const {
        std::vector<std::string> paths;
        for (const std::string& name : namesEndingIn(".png", folder)) {
            paths.push_back(folder + "/" + name);
        }
        return paths;
    }
};

TEST_F(CaptureProgram, PrintsTheFramesInTheOrderOfTheirCapture) {
    const Ended ended = capture({"--interval", "1", "--count", "3"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    EXPECT_THAT(framePaths(), SizeIs(3));
    EXPECT_EQ(savedPaths(ended), framePaths());
    expectWholeFramesOnly();
}

TEST_F(CaptureProgram, WithoutAnIntervalSaysNothing) {
    const Ended ended = capture({"--count", "1", "--verbose"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    EXPECT_THAT(ended.lines(), SizeIs(1));
}

TEST_F(CaptureProgram, VerboseShowsTheInterval) {
    const std::pair<std::string, std::string> intervals[] = {
        {"0:59:00", "3540"}, {"999:59:59", "3599999"}, {"90s", "90"}, {"1:30", "90"}};
    for (const auto& [interval, seconds] : intervals) {
        SCOPED_TRACE(interval);
        const Ended ended = capture({"--interval=" + interval, "--count", "1", "--verbose"});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.errors, "( t = " + seconds + " s )\n");
    }
}

TEST_F(CaptureProgram, ProgressIsShownOnATerminal) {
    options.errorsGoToTerminal = true;
    const Ended ended = capture({"--interval", "1", "--count", "2"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.errors, StartsWith("\r\x1b[K0 of 2 saved, next in 0:01"));
    EXPECT_THAT(ended.errors, EndsWith("\r\x1b[K"));
    EXPECT_THAT(ended.errors, Not(HasSubstr("\n")));
    EXPECT_EQ(savedPaths(ended), framePaths());
    EXPECT_EQ(capture({"--interval", "1", "--count", "2", "--quiet"}).errors, "");
}

TEST_F(CaptureProgram, PathsAndProgressDoNotMeetOnALineOfATerminal) {
    options.errorsGoToTerminal = true;
    const Ended ended = runIn({"sh", "-c", "exec \"$0\" \"$@\" >&2"},
                              captureArguments({"--interval", "1", "--count", "2"}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(framePaths(), SizeIs(2));
    for (const std::string& path : framePaths()) {
        EXPECT_THAT(ended.errors, HasSubstr("\r\x1b[K" + path + "\r\n"));
    }
    EXPECT_THAT(ended.errors, EndsWith("\r\x1b[K"));
}

TEST_F(CaptureProgram, CompilesWhatIsInTheFolderThenPrintsTheMovie) {
    writeGreyFrame(folder + "/00 before.png", 50);
    const Ended ended = capture({"--interval", "1", "--count", "2", "--compile", "--fps", "25",
                                 "--crf", "30", "--x264-preset", "ultrafast"});
    EXPECT_EQ(ended.status, 0);
    const auto lines = ended.lines();
    // On a busy machine two stills may fall into one second, and have one name.
    EXPECT_THAT(std::set<std::string>(lines.begin(), lines.end()), SizeIs(3));
    ASSERT_THAT(lines, Not(IsEmpty()));
    EXPECT_THAT(lines.back(), EndsWith(".mov"));
    const MovieFacts facts = movieFacts(lines.back());
    EXPECT_EQ(facts.width, 64);
    EXPECT_EQ(facts.timeBase, "1/25");
    EXPECT_EQ(facts.times, frameTimes(3));
    EXPECT_THAT(ended.errors, EndsWith("3 of 3 frames went into the movie.\n"));
}

TEST_F(CaptureProgram, OneFrameIsTooFewToCompile) {
    const Ended ended = capture({"--count", "1", "--compile"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.lines(), SizeIs(1));
    EXPECT_THAT(ended.errors, HasSubstr("Bring me more frames please\n"));
    EXPECT_THAT(namesIn(folder), SizeIs(1));
}

TEST_F(CaptureProgram, AnInterruptEndsTheCaptureAndTheMovieIsMade) {
    writeGreyFrame(folder + "/00 before.png", 50);
    Program program(command(captureArguments({"--interval", "1", "--compile"})), options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(program.nextLine());
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.lines().back(), EndsWith(".mov"));
    // A still that was requested before the interrupt may come after the movie.
    EXPECT_THAT(movieFacts(ended.lines().back()).times,
                SizeIs(testing::AllOf(testing::Ge(2U), testing::Le(framePaths().size()))));
}

TEST_F(CaptureProgram, ASecondInterruptEndsItAtOnce) {
    for (int number = 0; number < 60; ++number) { // a compile of many seconds
        writeFrame(folder + "/00 " + std::to_string(number) + ".png",
                   {.width = 640, .height = 480, .isNoise = true});
    }
    Program program(command(captureArguments(
                        {"--interval", "1", "--compile", "--x264-preset", "placebo", "--verbose"})),
                    options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(program.nextLine());
    program.signal(SIGINT);
    ASSERT_TRUE(program.waitForError("moviePath="));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait().status, 130);
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());
    EXPECT_THAT(namesEndingIn(".vistrane-part", folder), IsEmpty());
}

TEST_F(CaptureProgram, OtherSignalsEndItWithoutAMovie) {
    Program program(command(captureArguments({"--interval", "1", "--compile"})), options);
    ASSERT_TRUE(program.nextLine());
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait().status, 143);
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());
}

TEST_F(CaptureProgram, EndsAfterADurationOrAtAMoment) {
    const Ended duration = capture({"--interval", "1", "--duration", "2s"});
    EXPECT_EQ(duration.status, 0);
    EXPECT_THAT(duration.lines(), SizeIs(testing::AllOf(testing::Ge(2U), testing::Le(3U))));
    const std::time_t moment = std::time(nullptr) + 3;
    char text[64];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::localtime(&moment));
    const Ended until = capture({"--interval", "1", "--until", text});
    EXPECT_EQ(until.status, 0) << until.errors;
    EXPECT_LE(std::abs(std::difftime(std::time(nullptr), moment)), 2.0);
    EXPECT_THAT(until.lines(), Not(IsEmpty()));
}

TEST_F(CaptureProgram, TheFolderIsCreatedOnRequest) {
    const std::string made = folder + "/new/one";
    const std::vector<std::string> arguments{
        "capture", made, "--demo-camera", "--device", "Demo Camera", "--count", "1"};
    EXPECT_EQ(run(arguments).status, 1);
    EXPECT_FALSE(std::filesystem::exists(made));
    std::vector<std::string> creating = arguments;
    creating.emplace_back("--create");
    EXPECT_EQ(run(creating).status, 0);
    EXPECT_THAT(namesIn(made), SizeIs(1));
}

TEST_F(CaptureProgram, FramesThatAreDeletedAtOnceAreNotWaitedFor) {
    Program program(command(captureArguments({"--interval", "1", "--count", "2"})), options);
    for (int frame = 0; frame < 2; ++frame) {
        const auto line = program.nextLine();
        ASSERT_TRUE(line);
        EXPECT_TRUE(std::filesystem::remove(*line));
    }
    EXPECT_EQ(program.wait().status, 0);
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(CaptureProgram, AnUnknownDeviceIsRefusedWithTheOfferedNames) {
    const Ended ended = run({"capture", folder, "--demo-camera", "--device", "Nobody's"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "vistrane: There is no camera 'Nobody's'. The cameras offered are:\n"
                            "  Demo Camera\n");
    const Ended none = run({"capture", folder, "--device", "Demo Camera"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.errors,
              "vistrane: There is no camera 'Demo Camera'. No camera is offered. --demo-camera "
              "offers one to try things with.\n");
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(CaptureProgram, TheDemoCameraIsOfferedOnRequestOnly) {
    const Ended none = run({"devices"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.output, "");
    EXPECT_EQ(none.errors, "No camera was found.\n");
    const Ended demo = run({"devices", "--demo-camera"});
    EXPECT_EQ(demo.status, 0);
    EXPECT_EQ(demo.output, "Demo Camera\n");
    EXPECT_EQ(demo.errors, "");
}

TEST_F(CaptureProgram, AReaderThatLeavesEndsIt) {
    Program program(command(captureArguments({"--interval", "1"})), options);
    ASSERT_TRUE(program.nextLine());
    program.closeOutput();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, EndsWith("Cannot write to standard output: Broken pipe.\n"));
    expectWholeFramesOnly();
}

TEST_F(CaptureProgram, AListThatCannotBeWrittenDoesNotEndIt) {
    const Ended ended = runIn({"sh", "-c", "exec \"$0\" \"$@\" >/dev/full"},
                              captureArguments({"--interval", "1", "--count", "3"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("Cannot write to standard output: No space left on "
                                        "device. Capturing goes on.\n"));
    EXPECT_THAT(namesIn(folder), SizeIs(3));
    expectWholeFramesOnly();
}

TEST_F(CaptureProgram, WithFewDescriptorsItEndsWithTheReason) {
    const Ended ended =
        runIn({"sh", "-c", "ulimit -n 40; exec \"$0\" \"$@\""}, captureArguments({"--count", "1"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("too many files are open"));
}

TEST_F(CaptureProgram, AFolderWithoutWritePermissionLosesEveryFrameWithAMessage) {
    const auto launcher = unprivilegedLauncher();
    if (!launcher) {
        GTEST_SKIP() << "There is no user without privileges here.";
    }
    options.environment.erase("GST_REGISTRY");
    std::filesystem::permissions(work.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder, std::filesystem::perms(0555));
    const Ended ended = runIn(*launcher, captureArguments({"--interval", "1", "--count", "2"}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(count(ended.errors, "A frame is lost: Cannot create the file " + folder), 2U);
    EXPECT_THAT(ended.errors, HasSubstr("Permission denied"));
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(CaptureProgram, AfterTheFolderIsRemovedFramesAreLost) {
    Program program(command(captureArguments({"--interval", "1", "--count", "3"})), options);
    ASSERT_TRUE(program.nextLine());
    std::filesystem::remove_all(folder);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("A frame is lost: Cannot create the file " + folder));
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(CaptureProgram, SettingsAreNotWritten) {
    const std::string configuration = work.makeFolder("configuration");
    options.environment["XDG_CONFIG_HOME"] = configuration;
    options.environment.erase("GST_REGISTRY");
    options.environment.erase("XDG_RUNTIME_DIR");
    writeGreyFrame(folder + "/a.png", 50);
    EXPECT_EQ(run({"devices", "--demo-camera"}).status, 0);
    EXPECT_EQ(capture({"--interval", "9", "--count", "1", "--compile", "--fps", "9"}).status, 0);
    EXPECT_EQ(run({"frames", folder}).status, 0);
    for (const std::string& movie : namesEndingIn(".mov", folder)) {
        // The next movie may get the same name.
        std::filesystem::remove(folder + "/" + movie);
    }
    EXPECT_EQ(run({"compile", folder, "--fps", "5"}).status, 0);
    EXPECT_THAT(namesIn(configuration), IsEmpty());
    for (const std::string& name : namesIn(home)) {
        EXPECT_EQ(name, ".cache");
    }
}

// ---- Ending
// ---------------------------------------------------------------------------------------

class EndedCapture : public CaptureProgram, public testing::WithParamInterface<int> {};

TEST_P(EndedCapture, StatusIsTheSignalsEveryFrameIsWholeAndNoMovieIsStarted) {
    Program program(command(captureArguments({"--interval", "1", "--count", "1000", "--compile"})),
                    options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(program.nextLine());
    program.signal(GetParam());
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 128 + GetParam());
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(savedPaths(ended), framePaths());
    expectWholeFramesOnly();
}

TEST_P(EndedCapture, StatusIsTheSignalsWhileTheCameraIsBeingOpened) {
    Program program(command(captureArguments({"--interval", "1"})), options);
    ASSERT_TRUE(program.waitUntilReadyFor(GetParam()));
    program.signal(GetParam());
    EXPECT_EQ(program.wait().status, 128 + GetParam());
    expectWholeFramesOnly();
}

INSTANTIATE_TEST_SUITE_P(By, EndedCapture, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(EndedCapture, AHangUpThatIsIgnoredAtTheStartStaysIgnored) {
    Program program(command(captureArguments({"--interval", "1", "--count", "2"}),
                            {"sh", "-c", "trap '' HUP; exec \"$0\" \"$@\""}),
                    options);
    ASSERT_TRUE(program.nextLine());
    program.signal(SIGHUP);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.lines(), SizeIs(2));
}

// ---- The demo
// -------------------------------------------------------------------------------------

class DemoProgram : public CaptureProgram {};

TEST_F(DemoProgram, TenStillsBecomeAMovieWhosePathIsTheOnlyOutput) {
    const Ended ended = run({"demo", folder});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    ASSERT_THAT(ended.lines(), SizeIs(1));
    const std::string movie = ended.lines()[0];
    EXPECT_EQ(ended.output, movie + "\n");
    EXPECT_THAT(namesEndingIn(".png", folder), SizeIs(10));
    EXPECT_THAT(namesIn(folder), SizeIs(11));
    for (const std::string& path : framePaths()) {
        EXPECT_TRUE(readFrame(path)) << path;
        EXPECT_THAT(ended.errors, HasSubstr(path + "\n"));
    }
    const MovieFacts facts = movieFacts(movie);
    EXPECT_EQ(facts.brand, "qt  ");
    EXPECT_EQ(facts.codec, "h264");
    EXPECT_EQ(facts.width, 1280);
    EXPECT_EQ(facts.height, 720);
    EXPECT_EQ(facts.timeBase, "1/10");
    EXPECT_THAT(facts.times, ElementsAre(0, 2, 3, 4, 5, 6, 7, 8, 9, 10));
    const Ended other =
        runTool({"mediainfo", "--Inform=General;%Format_Profile% %Duration%", movie});
    EXPECT_EQ(other.output, "QuickTime 1100\n");
}

TEST_F(DemoProgram, WithoutAFolderANewOneIsMadeInVideos) {
    const Ended ended = run({"demo"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    ASSERT_THAT(ended.lines(), SizeIs(1));
    const auto movie = std::filesystem::path(ended.lines()[0]);
    EXPECT_THAT(movie.string(), StartsWith(home + "/Videos/Vistrane demo "));
    EXPECT_THAT(namesEndingIn(".png", movie.parent_path()), SizeIs(10));
    EXPECT_THAT(namesIn(movie.parent_path()), SizeIs(11));
    EXPECT_THAT(namesIn(home + "/Videos"), SizeIs(1));
    EXPECT_THAT(namesIn(home), ElementsAre("Videos"));
}

TEST_F(DemoProgram, IfTheFolderCannotBeCreatedItSaysWhatToDo) {
    writeFile(home + "/Videos", "a file");
    const Ended ended = run({"demo"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("Name a folder: vistrane demo FOLDER."));
}

TEST_F(DemoProgram, AFailureLeavesNoEmptyFolder) {
    // Without plugins the demo camera cannot start.
    options.environment["GST_PLUGIN_SYSTEM_PATH_1_0"] = home;
    options.environment["GST_REGISTRY"] = work / "no-plugins.bin";
    const Ended ended = run({"demo"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_NE(ended.errors, "");
    EXPECT_THAT(namesIn(home), ElementsAre("Videos"));
    EXPECT_THAT(namesIn(home + "/Videos"), IsEmpty());
}

TEST_F(DemoProgram, AnEarlyInterruptLeavesNoEmptyFolder) {
    const std::string videos = work / "home/Videos";
    std::filesystem::create_directory(videos);
    Program program(command({"demo"}), options);
    const auto limit = std::chrono::steady_clock::now() + options.timeout;
    while (namesIn(videos).empty() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    program.signal(SIGINT);
    EXPECT_EQ(program.wait().status, 130);
    // On a slow machine the first frame may come before the interrupt.
    for (const std::string& name : namesIn(videos)) {
        EXPECT_THAT(namesIn(videos + "/" + name), Not(IsEmpty()));
    }
}

} // namespace
} // namespace vistrane
