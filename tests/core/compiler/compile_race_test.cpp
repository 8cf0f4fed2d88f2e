#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Each;
using ::testing::Field;
using ::testing::SizeIs;

/// The compile thread as a thread of the system, beside a main loop that replaces what it reads.
/// Recording is off, so that it orders no two threads that nothing else orders.
class CompileRace : public CompilerTest {
protected:
    void SetUp() override {
        CompilerTest::SetUp();
        sim.threads().useRealThreads();
        sim.log().recordCalls(false);
        saveFolder();
        for (int number = 0; number < 5; ++number) {
            sim.files().addPicture(path(number), {8.0, 6.0});
        }
        launch();
        sim.advance(0.1);
    }
};

TEST_F(CompileRace, AListThatGrowsDuringTheJobIsWrittenToItsEnd) {
    sim.movies().answerReadiness(std::vector<bool>(2000, false)); // Takes its time.
    delegate.genneratingMovie(nullptr);
    int number = 5;
    while (!sim.threads().allFinished()) {
        if (number < 60) {
            sim.files().addPicture(path(number++), {8.0, 6.0});
        }
        sim.advance(0.1);
    }
    sim.advance(0.0);
    EXPECT_GE(sim.movies().appends().size(), 5U);
    EXPECT_THAT(sim.movies().appends(), Each(Field(&SimAppend::accepted, true)));
    EXPECT_TRUE(button("compilingB").isEnabled());
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(CompileRace, AFolderThatIsEmptiedDuringTheJobEndsIt) {
    delegate.genneratingMovie(nullptr);
    for (int number = 0; number < 5; ++number) {
        sim.files().remove(path(number));
        sim.advance(0.1);
    }
    sim.advanceUntilThreadsEnd();
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
}

TEST_F(CompileRace, ControlsMayBeUsedDuringTheJob) {
    sim.movies().answerReadiness(std::vector<bool>(500, false));
    delegate.genneratingMovie(nullptr);
    while (!sim.threads().allFinished()) {
        slider("fpsS").drag(10.0);
        delegate.rateChanged(nullptr);
        delegate.darkModeChanged(nullptr);
        delegate.timeIntervalchanged(nullptr);
        sim.advance(0.1);
    }
    EXPECT_THAT(sim.movies().appends(), SizeIs(5));
}

TEST_F(CompileRace, SecondJobsMayBeStartedWhileTheFirstRuns) {
    for (int job = 0; job < 4; ++job) {
        delegate.genneratingMovie(nullptr);
        sim.advance(1.0);
    }
    // A job whose thread another one has replaced in the field is not ended by its own pass: it
    // goes on until the program ends. Here it ends with the test.
    sim.advance(1.0);
    sim.threads().end();
    EXPECT_EQ(sim.threads().count(), 4U);
    EXPECT_GE(sim.movies().appends().size(), 5U);
}

TEST_F(CompileRace, AFailedThreadRepeatsItsPassWhileTheMainLoopGoesOn) {
    for (int failure = 0; failure < 20; ++failure) {
        sim.movies().failCreation({"Movies", 28, "The disk is full."});
    }
    delegate.genneratingMovie(nullptr);
    sim.advanceUntilThreadsEnd();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(20));
    EXPECT_THAT(sim.movies().appends(), SizeIs(5));
}

} // namespace
} // namespace vistrane
