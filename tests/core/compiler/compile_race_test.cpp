#include <thread>

#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Each;
using ::testing::Field;
using ::testing::SizeIs;

/// The compile thread as a thread of the system, beside a main loop that replaces what it reads.
/// Recording is off, so that its lock hides no race.
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
    sim.movies().readiness.assign(2000, false); // Takes its time.
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
    sim.movies().readiness.assign(500, false);
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

TEST_F(CompileRace, JobsStartedWhileOthersRunWriteWholeMoviesAndFreeTheInterface) {
    for (int job = 0; job < 4; ++job) {
        delegate.genneratingMovie(nullptr);
        sim.advance(1.0);
    }
    // The last job's pass empties the field, or the pass that has cancelled the last job.
    for (int step = 0; step < 100000 && delegate.myThread.load(); ++step) {
        sim.advance(0.1);
        std::this_thread::yield();
    }
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    // A thread that another job has replaced in the field repeats its pass until the program ends.
    sim.threads().end();
    sim.advance(0.0);
    EXPECT_EQ(sim.threads().count(), 4U);
    EXPECT_GE(sim.movies().finishingWriters(), 1U);
    EXPECT_THAT(sim.movies().appends(), SizeIs(5 * sim.movies().finishingWriters()));
    EXPECT_THAT(sim.movies().appends(), Each(Field(&SimAppend::accepted, true)));
    EXPECT_TRUE(button("compilingB").isEnabled());
    EXPECT_EQ(progressBar().value, 0.0);
}

TEST_F(CompileRace, AFailedThreadRepeatsItsPassWhileTheMainLoopGoesOn) {
    for (int failure = 0; failure < 20; ++failure) {
        sim.movies().creations.push_back({NSError{"Movies", 28, "The disk is full."}, false});
    }
    delegate.genneratingMovie(nullptr);
    sim.advanceUntilThreadsEnd();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(20));
    EXPECT_THAT(sim.movies().appends(), SizeIs(5));
}

} // namespace
} // namespace vistrane
