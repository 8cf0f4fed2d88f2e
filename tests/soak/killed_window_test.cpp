#include <csignal>

#include "tests/desktop/DesktopTest.h"
#include "tests/soak/CompileFolder.h"
#include "tests/support/Soak.h"

namespace vistrane {
namespace {

class KilledWindow : public DesktopTest {
protected:
    void startAndCompile() {
        start({folder});
        awaitFrame(24, 24);
        clickButton("Compile Movie");
    }

    /// On the command line, in another time zone, so that the movie gets another name.
    int compileInAnotherZone() {
        const auto program =
            desktop.start("compile", {VISTRANE_PROGRAM, "compile", folder}, {{"TZ", "UTC+5"}});
        return program->wait().status;
    }
};

TEST_F(KilledWindow, LeavesAWholeMovieOrALeftoverThatTheNextCompileRemoves) {
    const CompileFolder frames{folder, {.frames = 24, .width = 320, .height = 240}};
    storeUsual();
    startAndCompile();
    const StopWatch watch;
    openedMovie();
    const auto usual = std::chrono::milliseconds(static_cast<long>(watch.milliseconds()));
    ASSERT_EQ(quit(), 0);
    ASSERT_EQ(frames.check().movies, 1);

    int movies = 0;
    int leftovers = 0;
    Soak soak("killed compiles of the window", {.few = 3, .many = 250});
    while (soak.next()) {
        SCOPED_TRACE(soak.round());
        startAndCompile();
        const bool isWriting = soak.round() % 2 == 1;
        if (isWriting) {
            await("the movie", [&] {
                return frames.hasUnfinishedMovie() || !namesEndingIn(".mov", folder).empty();
            });
        }
        soak.sleepUpTo(isWriting ? usual / 2 : usual * 5 / 4);
        program().signal(SIGKILL);
        EXPECT_EQ(awaitEnd(), -SIGKILL);

        const CompileFolder::Found found = frames.check();
        EXPECT_LE(found.movies + found.leftovers, 1);
        movies += found.movies;
        leftovers += found.leftovers;
        if (found.leftovers > 0) {
            EXPECT_EQ(compileInAnotherZone(), 0);
            const CompileFolder::Found after = frames.check();
            EXPECT_EQ(after.leftovers, 0);
            EXPECT_GE(after.movies, 1);
        }
    }
    soak.report(std::to_string(soak.round()) + " killed: " + std::to_string(movies) +
                    " whole movies, " + std::to_string(leftovers) +
                    " leftovers, all removed by the next compile",
                !HasFailure());
}

} // namespace
} // namespace vistrane
