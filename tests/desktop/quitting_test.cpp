#include <csignal>
#include <filesystem>

#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Pair;

class Quitting : public DesktopTest {
protected:
    /// What has to be in the store after every orderly end.
    void makeAChange() {
        fill("Seconds", "42");
        awaitLabel("( t = 42 s )");
    }

    void expectTheChangeIsSaved() { EXPECT_THAT(stored(), Contains(Pair("iSecond", 42))); }

    /// Frames whose every picture keeps an encoder busy.
    void makeHeavyFrames() const {
        makeFrames(80, {.width = 1280, .height = 720, .isNoise = true});
    }
};

TEST_F(Quitting, DuringACompileLeavesNoBrokenMovie) {
    makeHeavyFrames();
    storeUsual();
    start({folder});
    awaitFrame(80, 80);
    makeAChange();
    const Control progress = *firstBelow(
        root(), [](const Control& control) { return control.role() == "progress bar"; });
    clickButton("Compile Movie");
    await("the compile to get going", [&] { return progress.value() >= 2; });
    EXPECT_EQ(quit(), 0);
    expectTheChangeIsSaved();
    EXPECT_THAT(desktop.opened(), IsEmpty());
    for (const std::string& movie : namesEndingIn(".mov", folder)) {
        EXPECT_EQ(movie.front(), '.') << "has the name of a whole movie";
    }
}

TEST_F(Quitting, WhileItStartsKeepsTheSettings) {
    storeUsual(12);
    const auto before = stored();
    launch({folder});
    // From the first moment on in which the program may have the keys.
    const int status = await("the program's end", [this] {
                           screen().press({"Control_L", "q"});
                           return program().status();
                       }).value();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(stored(), before);
}

TEST_F(Quitting, DuringPlayingSavesTheSettings) {
    makeFrames(60);
    storeUsual(1);
    start({folder});
    awaitFrame(60, 60);
    makeAChange();
    clickButton("Play");
    awaitFrame(2, 60);
    EXPECT_EQ(quit(), 0);
    expectTheChangeIsSaved();
}

TEST_F(Quitting, DuringAnAlertOfTheCompileThreadEndsTheProgram) {
    makeFrames(3);
    storeUsual();
    start({folder});
    awaitFrame(3, 3);
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
    makeFrames(1);
    storeUsual();
    start({folder});
    awaitFrame(1, 1);
    makeAChange();
    clickButton("Compile Movie");
    alert("Bring me more frames please");
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    expectTheChangeIsSaved();
}

TEST_F(Quitting, ByTheKeysOfTheMenuSavesTheSettings) {
    storeUsual();
    start();
    makeAChange();
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
    expectTheChangeIsSaved();
}

TEST_F(Quitting, HappensWithTheMainWindowWhateverElseIsOpen) {
    store({{"firstTimeRunning", 1}, {"firstTime", 1}, {"iDock", 1}, {"iSecond", 5}});
    start();
    await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), Contains(Pair("iDock", 1)));
}

} // namespace
} // namespace vistrane
