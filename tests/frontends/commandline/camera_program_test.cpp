#include <chrono>
#include <csignal>
#include <thread>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_facts.h"

// Run by with_pipewire.sh, which provides a private PipeWire for the cameras.

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;
using testing::Not;
using testing::SizeIs;

/// Colour bars: the seven upper ones fill two thirds of the picture's height.
constexpr char bars[] = "videotestsrc is-live=true pattern=smpte";
constexpr char silent[] = "videotestsrc is-live=true ! valve drop=true "
                          "drop-mode=forward-sticky-events";

class CameraProgram : public CommandLineTest {
protected:
    CameraProgram() { options.environment.erase("XDG_RUNTIME_DIR"); }
    void SetUp() override { ASSERT_TRUE(testcam("start", "Testcam", bars)); }
    void TearDown() override {
        EXPECT_TRUE(testcam("stop", "Testcam"));
        EXPECT_TRUE(testcam("stop", "Othercam"));
    }

    static bool testcam(const std::string& verb, const std::string& name,
                        const std::string& source = bars) {
        return runTool({VISTRANE_TESTCAM, verb, name}, {{{"TESTCAM_SOURCE", source}}}).status == 0;
    }

    std::vector<std::string> captureArguments(const std::vector<std::string>& more,
                                              const std::string& device = "Testcam") const {
        std::vector<std::string> arguments{"capture", folder, "--device", device};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    static void expectBars(const std::string& path) {
        const auto frame = readFrame(path);
        ASSERT_TRUE(frame) << path;
        EXPECT_EQ(frame->width, 1280);
        EXPECT_EQ(frame->height, 720);
        // White, yellow, cyan, green, magenta, red, blue.
        const std::vector<std::array<int, 3>> colours = {
            {255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
            {255, 0, 255},   {255, 0, 0},   {0, 0, 255}};
        for (std::size_t bar = 0; bar < colours.size(); ++bar) {
            const auto shown = frame->at((2 * static_cast<int>(bar) + 1) * 1280 / 14, 200);
            for (std::size_t part = 0; part < 3; ++part) {
                EXPECT_NEAR(shown[part], colours[bar][part], 6) << path << " bar " << bar;
            }
        }
    }

    /// The seconds since midnight in a frame's name.
    static int secondsOf(const std::string& path) {
        const std::string name = std::filesystem::path(path).filename();
        return 3600 * std::stoi(name.substr(9, 2)) + 60 * std::stoi(name.substr(12, 2)) +
               std::stoi(name.substr(15, 2));
    }
};

TEST_F(CameraProgram, WithFewDescriptorsNothingCrashes) {
    for (const char* const limit : {"12", "24", "36", "48", "100"}) {
        const Ended ended = runIn({"sh", "-c", "ulimit -n $0; exec \"$@\"", limit}, {"devices"});
        EXPECT_EQ(ended.status, 0) << limit;
        const bool isEnough = limit == std::string("100");
        EXPECT_EQ(ended.output, isEnough ? "Testcam\n" : "") << limit;
        EXPECT_EQ(ended.errors.find("too many files are open") == std::string::npos, isEnough);
    }
}

TEST_F(CameraProgram, DevicesListsTheCamerasThenTheDemoCamera) {
    ASSERT_TRUE(testcam("start", "Othercam"));
    Ended ended = run({"devices"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "");
    EXPECT_THAT(ended.lines(), testing::UnorderedElementsAre("Testcam", "Othercam"));
    ASSERT_TRUE(testcam("stop", "Othercam"));
    ended = run({"devices", "--demo-camera"});
    EXPECT_THAT(ended.lines(), ElementsAre("Testcam", "Demo Camera"));
}

TEST_F(CameraProgram, CapturesWhatTheCameraShowsAndCompilesIt) {
    const Ended ended = run(captureArguments({"--interval", "1", "--count", "5", "--compile"}));
    EXPECT_EQ(ended.status, 0) << ended.errors;
    const auto lines = ended.lines();
    ASSERT_THAT(lines, SizeIs(6));
    for (std::size_t i = 0; i < 5; ++i) {
        expectBars(lines[i]);
    }
    EXPECT_THAT(namesIn(folder), SizeIs(6));
    const MovieFacts facts = movieFacts(lines[5]);
    EXPECT_EQ(facts.width, 1280);
    EXPECT_EQ(facts.height, 720);
    EXPECT_EQ(facts.times, frameTimes(5));
}

TEST_F(CameraProgram, ACameraThatGoesAndComesBackCostsThePicturesInBetweenOnly) {
    ASSERT_TRUE(testcam("start", "Othercam"));
    Program program(command(captureArguments({"--interval", "1", "--count", "6", "--compile"})),
                    options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(testcam("stop", "Testcam"));
    ASSERT_TRUE(program.waitForError("photoOutput error: "));
    ASSERT_TRUE(testcam("start", "Testcam"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0) << ended.errors;
    const auto lines = ended.lines();
    ASSERT_THAT(lines, SizeIs(7)) << ended.errors;
    for (std::size_t i = 0; i < 6; ++i) {
        expectBars(lines[i]);
    }
    EXPECT_EQ(movieFacts(lines[6]).times, frameTimes(6));
    // Every second has a still or an error; the first and the last may have both.
    const int day = 24 * 3600;
    const int seconds = (secondsOf(lines[5]) - secondsOf(lines[0]) + day) % day + 1;
    const int lost = static_cast<int>(count(ended.errors, "photoOutput error: "));
    EXPECT_THAT(6 + lost, testing::AllOf(Ge(seconds - 1), Le(seconds + 1))) << ended.errors;
}

TEST_F(CameraProgram, AStoppedCaptureGoesOnWithItsCamera) {
    Program program(command(captureArguments({"--interval", "1", "--count", "5"})), options);
    ASSERT_TRUE(program.nextLine());
    program.signal(SIGSTOP);
    std::this_thread::sleep_for(std::chrono::seconds(5)); // longer than a camera may be silent
    program.signal(SIGCONT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(namesIn(folder), SizeIs(5));
    EXPECT_THAT(ended.errors, Not(HasSubstr("gives no pictures")));
    EXPECT_THAT(ended.errors, Not(HasSubstr("photoOutput error: ")));
}

TEST_F(CameraProgram, AnInterruptEndsACaptureWhoseCameraIsGone) {
    Program program(command(captureArguments({"--interval", "1"})), options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(testcam("stop", "Testcam"));
    ASSERT_TRUE(program.waitForError("photoOutput error: "));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait().status, 130);
    EXPECT_THAT(namesIn(folder), Not(IsEmpty()));
}

TEST_F(CameraProgram, ACameraWithoutPicturesIsRefused) {
    ASSERT_TRUE(testcam("start", "Othercam", silent));
    const Ended ended = run(captureArguments({"--interval", "1", "--count", "1"}, "Othercam"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, Not(HasSubstr("deviceInputWithDevice: failed (")));
    EXPECT_THAT(ended.errors, HasSubstr("The camera 'Othercam' cannot be opened (it gives no "
                                        "picture within 3000 ms)"));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(CameraProgram, ACaptureOfANumberOfStillsEndsIfItsCameraStaysAway) {
    Program program(command(captureArguments({"--interval", "1", "--count", "100"})), options);
    ASSERT_TRUE(program.nextLine());
    ASSERT_TRUE(testcam("stop", "Testcam"));
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("The camera has given no still for 63 seconds"));
}

TEST_F(CameraProgram, AStillThatWasRequestedBeforeTheEndIsWaitedFor) {
    // A picture in three seconds.
    const char* const rate = "video/x-raw,format=I420,width=320,height=240,framerate=1/3";
    ASSERT_EQ(runTool({VISTRANE_TESTCAM, "start", "Slowcam"}, {{{"TESTCAM_CAPS", rate}}}).status,
              0);
    const Ended ended =
        run(captureArguments({"--interval", "60", "--duration", "1", "--compile"}, "Slowcam"));
    EXPECT_TRUE(testcam("stop", "Slowcam"));
    ASSERT_THAT(namesEndingIn(".png", folder), SizeIs(1)) << ended.errors;
    EXPECT_EQ(ended.lines().at(0), folder + "/" + namesEndingIn(".png", folder).at(0));
}

class EndedCamera : public CameraProgram, public testing::WithParamInterface<int> {};

TEST_P(EndedCamera, StatusIsTheSignalsWhileACameraKeepsItWaiting) {
    ASSERT_TRUE(testcam("start", "Othercam", silent));
    Program program(command(captureArguments({"--interval", "1"}, "Othercam")), options);
    ASSERT_TRUE(program.waitUntilReadyFor(GetParam()));
    program.signal(GetParam());
    EXPECT_EQ(program.wait().status, 128 + GetParam());
}

INSTANTIATE_TEST_SUITE_P(By, EndedCamera, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
} // namespace vistrane
