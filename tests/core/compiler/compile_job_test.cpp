#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// Read before any test can have changed it.
const std::int32_t rateAtProcessStart = compileFrameRate();

const std::string refusalText =
    "I need at least 2 frames to generate a movie.\n\nPlease double check you have more frames in "
    "the project folder and make sure they are NOT corrupted.\n";

TEST(CompileFrameRate, IsTwentyFiveBeforeTheFirstJob) {
    EXPECT_EQ(rateAtProcessStart, 25);
}

class CompileJob : public CompilerTest {
protected:
    void failCreations(int count) {
        for (int failure = 0; failure < count; ++failure) {
            sim.movies().creations.push_back({NSError{"Movies", 17, "The file exists."}, false});
        }
    }
};

TEST_F(CompileJob, FewerThanTwoFramesAreRefusedWithAnAlertAndNothingStarts) {
    for (const int count : {-1, 0, 1}) {
        if (count >= 0) {
            setFrames(count);
        }
        button("compilingB").currentState = 0;
        sim.alerts().takeShown();
        sim.alerts().whileUp([&](const SimShownAlert&) {
            EXPECT_FALSE(button("compilingB").isEnabled());
            EXPECT_EQ(button("compilingB").currentState, 1);
        });
        delegate.genneratingMovie(nullptr);
        ASSERT_THAT(sim.alerts().shown(), SizeIs(1));
        expectStandardAlert(sim.alerts().shown().at(0), "Bring me more frames please", refusalText);
        EXPECT_TRUE(button("compilingB").isEnabled());
        EXPECT_EQ(button("compilingB").currentState, 1);
        EXPECT_EQ(delegate.finalMoviePath.load(), nullptr);
        EXPECT_EQ(delegate.myThread.load(), nullptr);
        EXPECT_EQ(sim.threads().count(), 0U);
    }
}

TEST_F(CompileJob, ARefusalLeavesAnEarlierMoviePathAlone) {
    setFrames(2);
    compile();
    const std::string before = moviePath();
    setFrames(1);
    sim.advance(60.0);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), before);
}

TEST_F(CompileJob, TwoFramesStartTheThreadStepByStep) {
    setFrames(2);
    sim.setDate(1000.0);
    sim.threads().onStart(
        [&](SimThread& thread) { EXPECT_EQ(delegate.myThread.load().get(), &thread); });
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/YYYYMMDD-HHmmss-1000.mov");
    EXPECT_THAT(takeProcedure({"compilingB setState"}),
                ElementsAre("compilingB setEnabled: NO", "date",
                            "dateFormatter setDateFormat: YYYYMMDD-HHmmss",
                            "dateFormatter stringFromDate: 1000",
                            "NSLog: \nmoviePath=/f/YYYYMMDD-HHmmss-1000.mov",
                            "threadWithEntry -> thread1", "thread1 start"));
    EXPECT_EQ(nameOf(delegate.myThread.load().get()), "thread1");
    EXPECT_FALSE(button("compilingB").isEnabled());
    EXPECT_EQ(button("compilingB").currentState, 1);
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(CompileJob, TheFolderIsTheButtonsTitleWithoutAnyCheck) {
    setFrames(2);
    folderTitle() = "/a%@ b/%d";
    sim.setDate(1000.0);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/a%@ b/%d/YYYYMMDD-HHmmss-1000.mov");
    EXPECT_THAT(sim.logLines(), ElementsAre("\nmoviePath=/a%@ b/%d/YYYYMMDD-HHmmss-1000.mov"));
}

TEST_F(CompileJob, TheRateIsReadOnceAtTheStart) {
    setFrames(3);
    slider("fpsS").drag(10.0);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(compileFrameRate(), 10);
    slider("fpsS").drag(50.0);
    delegate.rateChanged(nullptr);
    sim.runThread(1);
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 10}, CMTime{3, 10}));
}

TEST_F(CompileJob, ANewJobReplacesThreadPathAndRate) {
    setFrames(2);
    delegate.genneratingMovie(nullptr);
    sim.advance(1.0);
    slider("fpsS").drag(12.0);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(nameOf(delegate.myThread.load().get()), "thread2");
    EXPECT_EQ(moviePath(), "/f/YYYYMMDD-HHmmss-1772892310.mov");
    EXPECT_EQ(compileFrameRate(), 12);
}

TEST_F(CompileJob, AThreadThatWasCancelledBeforeItRanMakesNoPass) {
    setFrames(2);
    delegate.genneratingMovie(nullptr);
    delegate.myThread.load()->cancel();
    sim.takeCalls();
    sim.runThread(1);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("thread1 isCancelled"));
}

TEST_F(CompileJob, APassThatCannotCreateItsMovieIsRepeatedWithItsAlertUntilOneSucceeds) {
    setFrames(2);
    failCreations(3);
    std::vector<bool> enabled;
    sim.alerts().whileUp(
        [&](const SimShownAlert&) { enabled.push_back(button("compilingB").isEnabled()); });
    compile();
    // From the end of the first alert on the button is usable.
    EXPECT_THAT(enabled, ElementsAre(false, true, true));
    // The thread asks itself before and after every pass.
    EXPECT_THAT(sim.takeCalls(), Contains("thread1 isCancelled").Times(5));
    EXPECT_THAT(sim.movies().appends(), SizeIs(2));
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(CompileJob, TheRunningThreadIsAskedEvenWhenAnotherJobHasReplacedIt) {
    setFrames(2);
    failCreations(1);
    sim.movies().creations.emplace_back();
    failCreations(1);
    int alerts = 0;
    sim.alerts().whileUp([&](const SimShownAlert&) {
        if (++alerts == 1) {
            // The user starts a second job while the first one shows its alert.
            const SimRole role = SimRole::main();
            delegate.genneratingMovie(nullptr);
        } else {
            sim.threads().thread(1)->cancelQuietly();
        }
    });
    compile();
    EXPECT_THAT(sim.calls(), Not(Contains("thread2 isCancelled")));
    // The pass that succeeded cancelled the second job's thread, the one in the field; the first
    // thread went on until it was cancelled itself.
    EXPECT_EQ(alerts, 2);
    EXPECT_THAT(sim.calls(), Contains("thread2 cancel"));
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    sim.takeCalls();
    sim.runThread(2);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("thread2 isCancelled"));
}

TEST_F(CompileJob, EveryNoticeGoesOverTheGlobalQueueToTheMainQueue) {
    setFrames(3);
    compile();
    EXPECT_THAT(sim.takeCalls(), Contains("globalQueue async").Times(4));
    sim.advance(0.0);
    EXPECT_THAT(sim.takeCalls(), Contains("mainQueue async").Times(4));
}

TEST_F(CompileJob, TheNoticesReachTheInterfaceInTheOrderInWhichTheyWerePosted) {
    setFrames(3);
    sim.files().addDamagedPicture(path(1));
    compile();
    // Nothing changes before the main loop runs.
    EXPECT_FALSE(button("compilingB").isEnabled());
    EXPECT_EQ(progressBar().maximum, 100.0);
    sim.takeCalls();
    sim.advance(0.0);
    EXPECT_THAT(takeProcedure({"mainQueue", "image"}),
                ElementsAre("progressBar setMaxValue: 3", "progressBar setDoubleValue: 0",
                            "myDisplay setImage: (null)", "progressBar setDoubleValue: 1",
                            "myDisplay setImage: /f/2.png", "progressBar setDoubleValue: 2",
                            "progressBar setDoubleValue: 0", "compilingB setEnabled: YES"));
}

TEST_F(CompileJob, ProgressNeverShowsFullNorTheFirstFrame) {
    setFrames(4);
    std::vector<double> values;
    std::vector<std::string> shown;
    sim.movies().beforeAppend = [&](std::size_t) {
        sim.advance(0.0);
        values.push_back(progressBar().value);
        shown.push_back(nameOf(display().image.get()));
    };
    compile();
    EXPECT_THAT(values, ElementsAre(0.0, 1.0, 2.0, 3.0));
    EXPECT_THAT(shown, ElementsAre("(null)", "/f/1.png", "/f/2.png", "/f/3.png"));
    EXPECT_EQ(progressBar().maximum, 4.0);
    sim.advance(0.0);
    EXPECT_EQ(progressBar().value, 0.0);
}

TEST_F(CompileJob, TheMaximumIsTheCountWhenTheNoticeRuns) {
    setFrames(2);
    sim.movies().beforeAppend = [&](std::size_t number) {
        if (number == 1) {
            setFrames(5); // The notice of the start has not run yet.
            sim.advance(0.0);
            EXPECT_EQ(progressBar().maximum, 5.0);
            setFrames(7);
        }
    };
    compile();
    sim.advance(0.0);
    EXPECT_EQ(progressBar().maximum, 5.0);
    EXPECT_THAT(sim.movies().appends(), SizeIs(7));
}

TEST_F(CompileJob, TheEndOfWritingIsOnlyLogged) {
    setFrames(2);
    compile();
    sim.advance(0.0);
    sim.takeCalls();
    sim.movies().finish();
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: finished writing"));
}

} // namespace
} // namespace vistrane
