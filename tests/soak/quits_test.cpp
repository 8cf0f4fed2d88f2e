#include <csignal>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/soak/CompileFolder.h"
#include "tests/support/Soak.h"

namespace vistrane {
namespace {

/// Signals at random moments of every command.
class Quits : public CommandLineTest {
protected:
    /// Checks that the frames of the folder are whole, and removes them.
    void checkStills(const std::string& place) const {
        for (const std::string& name : namesIn(place)) {
            const std::string path = place + "/" + name;
            if (name.ends_with(".mov")) {
                EXPECT_FALSE(name.starts_with("."));
            } else {
                EXPECT_TRUE(readFrame(path)) << name;
            }
            std::filesystem::remove(path);
        }
    }

    const CompileFolder frames{work.makeFolder("frames"),
                               {.frames = 24, .width = 320, .height = 240}};
};

TEST_F(Quits, OfTheCommandLineGiveTheStatusOfTheSignalAndLeaveNothingBroken) {
    const StopWatch watch;
    ASSERT_EQ(run({"compile", frames.path()}).status, 0);
    const auto compileTime = std::chrono::milliseconds(static_cast<long>(watch.milliseconds()));
    ASSERT_EQ(frames.check().movies, 1);

    struct State {
        std::vector<std::string> arguments;
        std::chrono::milliseconds longest;
    };
    const std::vector<State> states{
        {{"compile", frames.path()}, compileTime},
        {{"capture", folder, "--demo-camera", "--device", "Demo Camera", "--interval", "1"},
         std::chrono::milliseconds(2500)},
        {{"demo", folder}, std::chrono::milliseconds(2500)},
        {{"compile", frames.path()}, compileTime},
        {{"devices", "--demo-camera"}, std::chrono::milliseconds(300)},
        {{"frames", frames.path()}, std::chrono::milliseconds(200)},
    };
    const std::vector<int> endingSignals{SIGINT, SIGTERM, SIGHUP};

    Times times;
    int interrupted = 0;
    Soak soak("quits of the command line", {.few = 6, .many = 250});
    while (soak.next()) {
        const State& state = states[static_cast<std::size_t>(soak.round() - 1) % states.size()];
        const int signal = endingSignals[static_cast<std::size_t>(soak.randomUpTo(2))];
        SCOPED_TRACE(testing::PrintToString(state.arguments) + ", signal " +
                     std::to_string(signal));
        Program program(command(state.arguments), options);
        soak.sleepUpTo(state.longest);
        const StopWatch ending;
        program.signal(signal);
        const Ended ended = program.wait();
        const double time = ending.milliseconds();

        const CompileFolder::Found found = frames.check();
        EXPECT_EQ(found.leftovers, 0);
        checkStills(folder);
        if (ended.status == -signal) {
            // Before the program handles signals it has done nothing.
            EXPECT_EQ(ended.output + ended.errors, "");
        } else if (ended.status != 0) {
            EXPECT_EQ(ended.status, 128 + signal) << ended.errors;
            ++interrupted;
        }
        const bool finishedAMovie = found.movies > 0;
        if (ended.status != 0 && !finishedAMovie) {
            times.add(time);
        }
    }
    EXPECT_GT(interrupted, 0);
    soak.report(std::to_string(soak.round()) + " signals, " + std::to_string(interrupted) +
                    " of them before the command's end; the slowest end took " +
                    std::to_string(static_cast<int>(times.worst())) + " ms",
                times.worst() <= 1000 && !HasFailure());
}

} // namespace
} // namespace vistrane
