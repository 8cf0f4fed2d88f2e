#include <csignal>
#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Pair;

class Quitting : public DesktopTest {
protected:
    /// A change that every orderly end has to save.
    void makeAChange() {
        fill("Seconds", "42");
        awaitLabel("( t = 42 s )");
    }

    void expectTheChangeIsSaved() { EXPECT_THAT(stored(), Contains(Pair("iSecond", 42))); }
};

TEST_F(Quitting, DuringACompileLeavesNoBrokenMovie) {
    // Noise keeps the encoder busy.
    startWithFrames(80, 30, {.width = 1280, .height = 720, .isNoise = true});
    makeAChange();
    const Control progress = progressBar();
    clickButton("Compile Movie");
    await("the compile to get going", [&] { return progress.value() >= 2; });
    EXPECT_EQ(quit(), 0);
    expectTheChangeIsSaved();
    EXPECT_THAT(desktop.opened(), IsEmpty());
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());
}

TEST_F(Quitting, WhenOnlyTheEndOfTheMovieIsMissingLetsItBecomeWhole) {
    startWithFrames(40, 30, {.width = 1280, .height = 720, .isNoise = true});
    makeAChange();
    const Control compile = button("Compile Movie");
    clickButton("Compile Movie");
    await("the compile to begin", [&] { return !compile.is(ControlState::enabled); });
    await("the last frame", [&] { return compile.is(ControlState::enabled); });
    EXPECT_EQ(quit(), 0);
    expectTheChangeIsSaved();
    const auto movies = namesEndingIn(".mov", folder);
    ASSERT_EQ(movies.size(), 1U);
    EXPECT_EQ(movieFacts(folder + "/" + movies.front()).times.size(), 40U);
}

TEST_F(Quitting, WhileItStartsKeepsTheSettings) {
    storeUsual(12);
    const auto before = stored();
    launch({folder});
    // From the first moment at which the program may have the keyboard.
    const int status = await("the program's end", [this] {
                           screen().press({"Control_L", "q"});
                           return program().status();
                       }).value();
    EXPECT_EQ(status, 0);
    // The window's place is added if the launch was over.
    EXPECT_THAT(stored(), testing::IsSupersetOf(before));
}

TEST_F(Quitting, ByTheKeysOfTheMenuDuringPlayingSavesTheSettings) {
    startWithFrames(60, 1);
    makeAChange();
    clickButton("Play");
    await("playing to begin", [this] { return frameShown()->first < 60; });
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
    expectTheChangeIsSaved();
}

TEST_F(Quitting, DuringAnAlertOfTheCompileThreadEndsTheProgram) {
    startWithFrames(3);
    makeAChange();
    std::filesystem::rename(folder, folder + " away");
    clickButton("Compile Movie");
    alert("Vistran movie compiling error:");
    keepScreen("alert");
    EXPECT_EQ(quit(), 0);
    expectTheChangeIsSaved();
    EXPECT_THAT(namesEndingIn(".mov", folder + " away"), IsEmpty());
}

TEST_F(Quitting, AtTheSystemsRequestDuringAModalAlertSavesTheSettings) {
    startWithFrames(1);
    makeAChange();
    clickButton("Compile Movie");
    alert("Bring me more frames please");
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    expectTheChangeIsSaved();
}

} // namespace
} // namespace vistrane
