#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Read before any test can have changed it.
const std::int32_t rateAtProcessStart = compileFrameRate();

constexpr double newYear2026 = 1767225600.0;
constexpr double day = 86400.0;
/// 5 February 2026, 14:03:09.
constexpr double february5 = newYear2026 + 35 * day + 14 * 3600 + 3 * 60 + 9;

const std::string refusalText =
    "I need at least 2 frames to generate a movie.\n\nPlease double check you have more frames in "
    "the project folder and make sure they are NOT corrupted.\n";

TEST(CompileFrameRate, IsTwentyFiveBeforeTheFirstJob) {
    EXPECT_EQ(rateAtProcessStart, 25);
}

class CompileJob : public CompilerTest {
protected:
    std::string moviePath() { return *delegate.finalMoviePath.load(); }
    /// Runs the notices posted so far and returns what they did to the interface.
    std::vector<std::string> runNotices() {
        sim.takeCalls();
        sim.advance(0.0);
        std::vector<std::string> effects;
        for (std::string& call : sim.takeCalls()) {
            if (call != "mainQueue async") {
                effects.push_back(std::move(call));
            }
        }
        return effects;
    }
};

class RefusedJob : public CompileJob, public ::testing::WithParamInterface<int> {};

TEST_P(RefusedJob, ShowsTheAlertAndStartsNothing) {
    if (GetParam() >= 0) {
        setFrames(GetParam());
    }
    sim.alerts().whileUp([&](const SimShownAlert&) {
        EXPECT_FALSE(button("compilingB").isEnabled());
        EXPECT_EQ(button("compilingB").currentState, 1);
    });
    delegate.genneratingMovie(nullptr);
    EXPECT_THAT(takeProcedure(), ElementsAre("compilingB setState: 1", "compilingB setEnabled: NO",
                                             "alert1 runModal", "compilingB setEnabled: YES"));
    ASSERT_THAT(sim.alerts().shown(), SizeIs(1));
    expectStandardAlert(sim.alerts().shown().at(0), "Bring me more frames please", refusalText);
    EXPECT_TRUE(button("compilingB").isEnabled());
    EXPECT_EQ(button("compilingB").currentState, 1);
    EXPECT_EQ(delegate.finalMoviePath.load(), nullptr);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    EXPECT_EQ(sim.threads().count(), 0U);
}

INSTANTIATE_TEST_SUITE_P(WithoutAList, RefusedJob, ::testing::Values(-1));
INSTANTIATE_TEST_SUITE_P(WithFewerThanTwoFrames, RefusedJob, ::testing::Values(0, 1));

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
    sim.setDate(february5);
    delegate.genneratingMovie(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("compilingB setState: 1", "compilingB setEnabled: NO",
                                             "date", "dateFormatter setDateFormat: YYYYMMDD-HHmmss",
                                             "dateFormatter stringFromDate: 1770300189",
                                             "NSLog: \nmoviePath=/f/20260236-140309.mov",
                                             "threadWithEntry -> thread1", "thread1 start"));
    EXPECT_EQ(moviePath(), "/f/20260236-140309.mov");
    EXPECT_EQ(nameOf(delegate.myThread.load().get()), "thread1");
    EXPECT_FALSE(button("compilingB").isEnabled());
    EXPECT_EQ(button("compilingB").currentState, 1);
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(CompileJob, TheNameHasTheDayOfTheYear) {
    setFrames(2);
    sim.setDate(newYear2026 + 98 * day);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/20260499-000000.mov");
    sim.setDate(newYear2026 + 99 * day);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/202604100-000000.mov");
    sim.setDate(newYear2026 + 8 * day);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/20260109-000000.mov");
}

TEST_F(CompileJob, TheNameHasTheYearOfTheWeek) {
    setFrames(2);
    sim.setDate(newYear2026 - 2 * day);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/202612364-000000.mov");
    sim.dateRules().weeks = SimWeekRule::iso8601();
    sim.setDate(newYear2026 + 365 * day);
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/f/20260101-000000.mov");
}

TEST_F(CompileJob, TheFolderIsTheButtonsTitleWithoutAnyCheck) {
    setFrames(2);
    button("outfolderB").currentTitle = "/a%@ b/%d";
    sim.dateRules().fixedAnswer = "stamp";
    delegate.genneratingMovie(nullptr);
    EXPECT_EQ(moviePath(), "/a%@ b/%d/stamp.mov");
    EXPECT_THAT(sim.logLines(), ElementsAre("\nmoviePath=/a%@ b/%d/stamp.mov"));
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
    EXPECT_EQ(moviePath(), "/f/20260366-140510.mov");
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

TEST_F(CompileJob, TheThreadAsksItselfBeforeAndAfterEveryPass) {
    setFrames(2);
    compile();
    const std::vector<std::string> calls = sim.takeCalls();
    EXPECT_EQ(calls.front(), "thread1 isCancelled");
    EXPECT_EQ(calls.back(), "thread1 isCancelled");
    EXPECT_THAT(calls, Contains("thread1 isCancelled").Times(2));
}

TEST_F(CompileJob, APassThatCannotCreateItsMovieIsRepeatedWithItsAlertUntilOneSucceeds) {
    setFrames(2);
    for (int failure = 0; failure < 3; ++failure) {
        sim.movies().failCreation({"Movies", 17, "The file exists."});
    }
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(3));
    EXPECT_THAT(sim.takeCalls(), Contains("thread1 isCancelled").Times(5));
    EXPECT_THAT(sim.movies().appends(), SizeIs(2));
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(CompileJob, TheButtonIsUsableWhileTheFailedThreadGoesOn) {
    setFrames(2);
    sim.movies().failCreation({"Movies", 17, "The file exists."});
    sim.movies().failCreation({"Movies", 17, "The file exists."});
    std::vector<bool> enabled;
    sim.alerts().whileUp(
        [&](const SimShownAlert&) { enabled.push_back(button("compilingB").isEnabled()); });
    compile();
    // The first alert comes before the button is enabled, the second one afterwards.
    EXPECT_THAT(enabled, ElementsAre(false, true));
}

TEST_F(CompileJob, TheRunningThreadIsAskedEvenWhenAnotherJobHasReplacedIt) {
    setFrames(2);
    sim.movies().failCreation({"Movies", 17, "The file exists."});
    sim.movies().allowCreation();
    sim.movies().failCreation({"Movies", 17, "The file exists."});
    int alerts = 0;
    sim.alerts().whileUp([&](const SimShownAlert&) {
        if (++alerts == 1) {
            // The user starts a second job while the first one shows its alert.
            const ScopedSimRole role = ScopedSimRole::main();
            delegate.genneratingMovie(nullptr);
        } else {
            sim.threads().thread(1)->cancelQuietly();
        }
    });
    compile();
    // The pass that succeeded cancelled the second job's thread, the one in the field; the first
    // thread went on until it was cancelled itself.
    EXPECT_EQ(alerts, 2);
    EXPECT_THAT(sim.calls(), Contains("thread2 cancel"));
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    sim.takeCalls();
    sim.runThread(2);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("thread2 isCancelled"));
}

TEST_F(CompileJob, TheSameSecondGivesTheSameNameAndTheSecondJobFails) {
    setFrames(2);
    compile();
    sim.movies().finish();
    sim.alerts().whileUp([&](const SimShownAlert&) {
        if (sim.alerts().shown().size() == 4) {
            sim.files().remove(moviePath());
        }
    });
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(4));
    EXPECT_EQ(sim.alerts().shown().at(3).message, "Vistran movie compiling error:");
}

TEST_F(CompileJob, EveryNoticeGoesOverTheGlobalQueueToTheMainQueue) {
    setFrames(3);
    compile();
    EXPECT_THAT(sim.takeCalls(), Contains("globalQueue async").Times(4));
    sim.advance(0.0);
    EXPECT_THAT(sim.takeCalls(), Contains("mainQueue async").Times(4));
    EXPECT_EQ(sim.loop().waitingItems(), 0U);
}

TEST_F(CompileJob, TheNoticesReachTheInterfaceInTheOrderInWhichTheyWerePosted) {
    setFrames(3);
    compile();
    EXPECT_THAT(runNotices(),
                ElementsAre("progressBar setMaxValue: 3", "progressBar setDoubleValue: 0",
                            "imageWithContentsOfFile: /f/1.png", "myDisplay setImage: /f/1.png",
                            "progressBar setDoubleValue: 1", "imageWithContentsOfFile: /f/2.png",
                            "myDisplay setImage: /f/2.png", "progressBar setDoubleValue: 2",
                            "progressBar setDoubleValue: 0", "compilingB setEnabled: YES"));
}

TEST_F(CompileJob, NothingOfTheInterfaceChangesBeforeTheMainLoopRuns) {
    setFrames(3);
    compile();
    EXPECT_FALSE(button("compilingB").isEnabled());
    EXPECT_EQ(display().image, nullptr);
    EXPECT_EQ(progressBar().maximum, 100.0);
}

TEST_F(CompileJob, ProgressNeverShowsFullNorTheFirstFrame) {
    setFrames(4);
    std::vector<double> values;
    std::vector<std::string> shown;
    sim.movies().beforeAppend([&](std::size_t) {
        sim.advance(0.0);
        values.push_back(progressBar().value);
        shown.push_back(nameOf(display().image.get()));
    });
    compile();
    EXPECT_THAT(values, ElementsAre(0.0, 1.0, 2.0, 3.0));
    EXPECT_THAT(shown, ElementsAre("(null)", "/f/1.png", "/f/2.png", "/f/3.png"));
    EXPECT_EQ(progressBar().maximum, 4.0);
    sim.advance(0.0);
    EXPECT_EQ(progressBar().value, 0.0);
}

TEST_F(CompileJob, TheMaximumIsTheCountWhenTheNoticeRuns) {
    setFrames(2);
    sim.movies().beforeAppend([&](std::size_t number) {
        if (number == 1) {
            setFrames(5); // Not yet shown: the notice of the start is still on its way.
            sim.advance(0.0);
            EXPECT_EQ(progressBar().maximum, 5.0);
            setFrames(7);
        }
    });
    compile();
    sim.advance(0.0);
    EXPECT_EQ(progressBar().maximum, 5.0);
    EXPECT_THAT(sim.movies().appends(), SizeIs(7));
}

TEST_F(CompileJob, AFrameThatDoesNotLoadEmptiesTheDisplay) {
    setFrames(2);
    sim.files().addDamagedPicture(path(1));
    compile();
    EXPECT_THAT(runNotices(), Contains("myDisplay setImage: (null)"));
}

TEST_F(CompileJob, AfterAJobTheButtonIsEnabledAndStillOnAndThePathIsKept) {
    setFrames(2);
    compile();
    sim.advance(0.0);
    EXPECT_TRUE(button("compilingB").isEnabled());
    EXPECT_EQ(button("compilingB").currentState, 1);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    EXPECT_EQ(moviePath(), "/f/20260366-140509.mov");
}

TEST_F(CompileJob, TheEndOfWritingIsOnlyLogged) {
    setFrames(2);
    compile();
    sim.advance(0.0);
    sim.takeCalls();
    sim.movies().finish();
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: finished writing"));
}

TEST_F(CompileJob, AnAlertOfTheThreadDoesNotStopTheMainLoop) {
    saveFolder();
    launch();
    setFrames(2);
    sim.movies().failCreation({"Movies", 17, "The file exists."});
    sim.alerts().stayUp(1.0);
    compile();
    EXPECT_THAT(sim.calls(), Contains("defaultManager contentsOfDirectoryAtPath: /f").Times(10));
}

} // namespace
} // namespace vistrane
