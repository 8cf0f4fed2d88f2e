#include <csignal>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/soak/CompileFolder.h"
#include "tests/support/Soak.h"

namespace vistrane {
namespace {

/// Each compile of the command line gets a movie name of its own: names have a resolution of one
/// second, and the time zones differ by hours.
class KilledCompile : public CommandLineTest {
protected:
    KilledCompile() { options.environment["TZ"] = "UTC"; }

    Ended compileInAnotherZone() {
        Program::Options other = options;
        other.environment["TZ"] = "UTC+5";
        return runTool(command({"compile", frames.path()}), other);
    }

    CompileFolder frames{folder, {.frames = 24, .width = 320, .height = 240}};
};

TEST_F(KilledCompile, LeavesAWholeMovieOrALeftoverThatTheNextCompileRemoves) {
    const StopWatch watch;
    ASSERT_EQ(compileInAnotherZone().status, 0);
    const auto usual = std::chrono::milliseconds(static_cast<long>(watch.milliseconds()));
    ASSERT_EQ(frames.check().movies, 1);

    int movies = 0;
    int leftovers = 0;
    int recovered = 0;
    Soak soak("killed compiles of the command line", {.few = 6, .many = 250});
    while (soak.next()) {
        SCOPED_TRACE(soak.round());
        Program program(command({"compile", frames.path()}), options);
        // Half of them are killed while the movie is being written, the others at any time.
        const bool isWriting = soak.round() % 2 == 1;
        while (isWriting && !frames.hasUnfinishedMovie() && !program.status()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        soak.sleepUpTo(isWriting ? usual / 3 : usual);
        program.signal(SIGKILL);
        const int status = program.wait().status;
        EXPECT_TRUE(status == -SIGKILL || status == 0) << status;

        const CompileFolder::Found found = frames.check();
        EXPECT_LE(found.movies + found.leftovers, 1);
        EXPECT_TRUE(status != 0 || found.movies == 1);
        movies += found.movies;
        leftovers += found.leftovers;
        if (found.leftovers > 0) {
            const Ended next = compileInAnotherZone();
            EXPECT_EQ(next.status, 0) << next.errors;
            const CompileFolder::Found after = frames.check();
            EXPECT_EQ(after.leftovers, 0);
            EXPECT_GE(after.movies, 1);
            recovered += after.movies - 1;
        }
    }
    EXPECT_GT(leftovers, 0);
    soak.report(std::to_string(soak.round()) + " killed: " + std::to_string(movies) +
                    " whole movies, " + std::to_string(leftovers) +
                    " leftovers, all removed by the next compile, of which " +
                    std::to_string(recovered) + " were complete and became movies",
                !HasFailure());
}

} // namespace
} // namespace vistrane
