#include <algorithm>
#include <csignal>
#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/support/Environment.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

/// The window while calls of the C library fail: see fault_shim.cpp.
class FailingCalls : public DesktopTest {
protected:
    /// Starts the program with three frames. No call fails yet.
    void startWithFault(const std::string& fault) {
        makeFrames(3);
        storeUsual();
        const Environment shim("LD_PRELOAD", VISTRANE_FAULT_SHIM);
        const Environment setting("VISTRANE_FAULT", fault.c_str());
        const Environment gate("VISTRANE_FAULT_GATE", gate_.c_str());
        const Environment log("VISTRANE_FAULT_LOG", faultLog.c_str());
        start({folder, "--demo-camera"});
        awaitFrame(3, 3);
    }
    void letCallsFail() const { writeFile(gate_, ""); }
    void letCallsSucceed() const { std::filesystem::remove(gate_); }

    void awaitEnabled(const Control& control) {
        await("the button", [&] { return control.is(ControlState::enabled); });
    }
    void awaitLog(const std::string& text) {
        await("the log", [&] { return program().log().find(text) != std::string::npos; });
    }

    /// The calls that failed.
    const std::string faultLog = desktop.work() / "faults";

private:
    const std::string gate_ = desktop.work() / "gate";
};

TEST_F(FailingCalls, WithoutAThreadTheCompileButtonComesBackWithAMessage) {
    startWithFault("pthread_create EAGAIN 1 0 ");
    const Control compile = button("Compile Movie");
    letCallsFail();
    click(compile);
    awaitLabel("The movie cannot be made, because the system refuses another thread. Close some "
               "programs, then compile again.");
    keepScreen("no thread");
    awaitEnabled(compile);
    letCallsSucceed();
    click(compile);
    EXPECT_EQ(movieFacts(openedMovie()).times.size(), 3U);
}

TEST_F(FailingCalls, AFullDiskEndsTheMovieWithAMessage) {
    startWithFault("write ENOSPC 1 0 .vistrane-part");
    const Control compile = button("Compile Movie");
    letCallsFail();
    click(compile);
    labelFrom("The movie cannot be written (" + folder);
    keepScreen("full disk");
    awaitEnabled(compile);
    EXPECT_THAT(namesIn(folder), ElementsAre("001.png", "002.png", "003.png"));
}

TEST_F(FailingCalls, CapturingGoesOnAfterTheDiskWasFull) {
    startWithFault("write ENOSPC 1 0 " + folder + "/");
    pickCamera("Demo Camera");
    letCallsFail();
    clickButton("Start Auto Capture");
    awaitLog("A frame is lost");
    EXPECT_THAT(namesIn(folder), ElementsAre("001.png", "002.png", "003.png"));
    letCallsSucceed();
    await("the next frame", [this] { return namesEndingIn(".png", folder).size() > 3; });
    clickButton("Stop Auto Capture");
    EXPECT_THAT(program().log(), HasSubstr("No space left on device"));
}

TEST_F(FailingCalls, ADiskThatHangsHoldsUpNeitherTheEndNorLeavesAnUnfinishedMovie) {
    startWithFault("fsync hang 1 0 .vistrane-part");
    letCallsFail();
    clickButton("Compile Movie");
    await("the hanging call", [this] { return !contentsOf(faultLog).empty(); });
    screen().close(mainWindow());
    await("the windows to go", [this] {
        const auto windows = screen().windows();
        return std::none_of(windows.begin(), windows.end(), [this](const Window& each) {
            return each.process == program().process();
        });
    });
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    EXPECT_THAT(namesIn(folder), ElementsAre("001.png", "002.png", "003.png"));
}

TEST_F(FailingCalls, AMovieThatIsWholeWhenTheDiskHangsIsPublishedByTheNextCompile) {
    startWithFault("fsync hang 2 2 .vistrane-part");
    letCallsFail();
    clickButton("Compile Movie");
    await("the hanging call", [this] { return !contentsOf(faultLog).empty(); });
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    EXPECT_THAT(namesIn(folder), SizeIs(4));
    start({folder});
    awaitFrame(3, 3);
    clickButton("Compile Movie");
    EXPECT_EQ(movieFacts(openedMovie()).times.size(), 3U);
    const auto movies = namesEndingIn(".mov", folder);
    ASSERT_THAT(movies, SizeIs(2));
    for (const std::string& movie : movies) {
        EXPECT_EQ(movieFacts(folder + "/" + movie).times.size(), 3U);
    }
}

TEST_F(FailingCalls, WithoutMemoryForThePreviewTheProgramGoesOn) {
    startWithFault("malloc ENOMEM 1 0 500000 /vistrane\nmalloc ENOMEM 1 0 500000 libstdc++");
    letCallsFail();
    pickCamera("Demo Camera");
    await("a refused preview", [this] { return !contentsOf(faultLog).empty(); });
    letCallsSucceed();
    await("the preview", [this] { return isLit(cameraView()); });
}

} // namespace
} // namespace vistrane
