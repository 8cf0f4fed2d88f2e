#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

SimUserDefaults::Value number(NSInteger value) {
    return value;
}

class Settings : public ControllerTest {
protected:
    SimUserDefaults::Values& store() { return sim.defaults().values; }
    void expectFields(const std::string& hours, const std::string& minutes,
                      const std::string& seconds) {
        EXPECT_EQ(textField("hInput").text, hours);
        EXPECT_EQ(textField("mInput").text, minutes);
        EXPECT_EQ(textField("sInput").text, seconds);
    }
};

TEST_F(Settings, TheFirstRunStoresTheDefaultsAndBeepsOnce) {
    delegate.userDefaultsLoad();
    EXPECT_THAT(store(),
                UnorderedElementsAre(Pair("firstTimeRunning", number(1)), Pair("iSlow", number(0)),
                                     Pair("iFPS", number(30)), Pair("iHour", number(0)),
                                     Pair("iMinue", number(0)), Pair("iSecond", number(5))));
    expectFields("0", "0", "5");
    EXPECT_EQ(textField("timeD").text, "( t = 5 s )");
    EXPECT_EQ(textField("fpsD").text, "( fps = 30 )");
    EXPECT_EQ(delegate.realInterval, 5);
    EXPECT_THAT(sim.takeCalls(), Contains("NSBeep").Times(1));
}

TEST_F(Settings, ALaterRunStoresNothingAndRestoresInOrder) {
    store() = {{"firstTimeRunning", number(1)},
               {"iSlow", number(1)},
               {"iFPS", number(24)},
               {"iHour", number(2)},
               {"iMinute", number(30)},
               {"iMinue", number(44)},
               {"iSecond", number(15)}};
    delegate.userDefaultsLoad();
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre("standardUserDefaults integerForKey: firstTimeRunning",
                    "dateWithTimeIntervalSinceNow: 0.2", "runUntilDate: 1772892309.2",
                    "standardUserDefaults integerForKey: iSlow", "slowB setState: 1",
                    "standardUserDefaults integerForKey: iFPS", "fpsS setIntegerValue: 24",
                    "fpsD setStringValue: ( fps = 24 )",
                    "standardUserDefaults integerForKey: iHour", "hInput setIntegerValue: 2",
                    "standardUserDefaults integerForKey: iMinute", "mInput setIntegerValue: 30",
                    "standardUserDefaults integerForKey: iSecond", "sInput setIntegerValue: 15",
                    "hInput setIntValue: 2", "mInput setIntValue: 30", "sInput setIntValue: 15",
                    "timeD setStringValue: ( t = 9015 s )"));
}

TEST_F(Settings, AnyMarkerOtherThanOneStoresTheDefaultsButNoMinute) {
    for (const NSInteger marker : {NSInteger{2}, NSInteger{0}, NSInteger{-1}, NSInteger{1} << 32}) {
        store() = {{"firstTimeRunning", number(marker)},
                   {"iSlow", number(1)},
                   {"iFPS", number(10)},
                   {"iHour", number(7)},
                   {"iMinute", number(8)},
                   {"iSecond", number(9)}};
        delegate.userDefaultsLoad();
        EXPECT_THAT(store(),
                    UnorderedElementsAre(Pair("firstTimeRunning", number(1)),
                                         Pair("iSlow", number(0)), Pair("iFPS", number(30)),
                                         Pair("iHour", number(0)), Pair("iMinue", number(0)),
                                         Pair("iMinute", number(8)), Pair("iSecond", number(5))));
        expectFields("0", "8", "5");
        EXPECT_EQ(textField("timeD").text, "( t = 485 s )");
        EXPECT_THAT(sim.takeCalls(), Contains("NSBeep").Times(1));
    }
}

TEST_F(Settings, AMarkerThatIsNoNumberCountsAsTheFirstRun) {
    for (const auto& marker : {SimUserDefaults::Value(std::string("abc")),
                               SimUserDefaults::Value(std::vector<std::uint8_t>{1})}) {
        store() = {{"firstTimeRunning", marker}};
        delegate.userDefaultsLoad();
        EXPECT_THAT(sim.takeCalls(), Contains("NSBeep"));
    }
}

TEST_F(Settings, AMarkerInDigitsCountsAsANumber) {
    store() = {{"firstTimeRunning", std::string("1")}, {"iHour", std::string("7")}};
    delegate.userDefaultsLoad();
    EXPECT_THAT(sim.calls(), Not(Contains("NSBeep")));
    expectFields("7", "0", "0");
}

TEST_F(Settings, AStoredHourBeyondTheRangeIsShownClamped) {
    store() = {{"firstTimeRunning", number(1)}, {"iHour", number(5000)}};
    delegate.userDefaultsLoad();
    expectFields("999", "0", "0");
    EXPECT_EQ(delegate.realInterval, 3596400);
}

TEST_F(Settings, StoredValuesOfAnySizeEndInTheRange) {
    store() = {{"firstTimeRunning", number(1)},
               {"iFPS", number(NSInteger{1} << 40)},
               {"iHour", number(NSInteger{1} << 40)},
               {"iMinute", number(-3)},
               {"iSecond", number(INT64_MIN)}};
    delegate.userDefaultsLoad();
    expectFields("999", "0", "0");
    // The slider's own range limits the rate.
    EXPECT_EQ(textField("fpsD").text, "( fps = 60 )");
}

TEST_F(Settings, MissingValuesReadAsZero) {
    store() = {{"firstTimeRunning", number(1)}};
    delegate.userDefaultsLoad();
    expectFields("0", "0", "1");
    EXPECT_EQ(button("slowB").currentState, 0);
    EXPECT_EQ(textField("fpsD").text, "( fps = 1 )");
    EXPECT_EQ(textField("timeD").text, "( t = 1 s )");
}

TEST_F(Settings, TheLoopRunsForAFifthOfASecondBeforeTheControlsAreSet) {
    store() = {{"firstTimeRunning", number(1)}, {"iHour", number(3)}};
    bool ran = false;
    sim.at(0.2, [&] {
        ran = true;
        textField("hInput").text = "77";
        EXPECT_THAT(sim.calls(), Not(Contains("slowB setState: 0")));
    });
    delegate.userDefaultsLoad();
    EXPECT_TRUE(ran);
    EXPECT_EQ(sim.loop().now(), 200000000);
    EXPECT_EQ(textField("hInput").text, "3");
}

TEST_F(Settings, TheDefaultsAreStoredBeforeThatPause) {
    bool ran = false;
    sim.at(0.1, [&] {
        ran = true;
        EXPECT_THAT(store(), Contains(Pair("iSecond", number(5))));
    });
    delegate.userDefaultsLoad();
    EXPECT_TRUE(ran);
}

TEST_F(Settings, SavingStoresWhatTheControlsHoldAndSynchronises) {
    button("slowB").currentState = 1;
    slider("fpsS").drag(12.0);
    setInterval("1", "2", "3");
    delegate.userDefaultsSave();
    EXPECT_THAT(sim.takeCalls(), ElementsAre("standardUserDefaults setInteger: 1 forKey: iSlow",
                                             "standardUserDefaults setInteger: 12 forKey: iFPS",
                                             "standardUserDefaults setInteger: 1 forKey: iHour",
                                             "standardUserDefaults setInteger: 2 forKey: iMinute",
                                             "standardUserDefaults setInteger: 3 forKey: iSecond",
                                             "standardUserDefaults synchronize"));
}

TEST_F(Settings, SavingDoesNotClampAndTakesWhatIsNoNumberAsZero) {
    setInterval("5000", "-5", "abc");
    delegate.userDefaultsSave();
    EXPECT_THAT(store(), Contains(Pair("iHour", number(5000))));
    EXPECT_THAT(store(), Contains(Pair("iMinute", number(-5))));
    EXPECT_THAT(store(), Contains(Pair("iSecond", number(0))));
    EXPECT_EQ(textField("hInput").text, "5000");
}

TEST_F(Settings, SavingKeepsSixtyFourBits) {
    setInterval("1099511627776", "0", "0");
    delegate.userDefaultsSave();
    EXPECT_THAT(store(), Contains(Pair("iHour", number(1099511627776))));
}

TEST_F(Settings, SavingTouchesNoOtherKey) {
    const SimUserDefaults::Values others = {
        {"iMinue", number(44)}, {"firstTimeRunning", number(7)}, {"iTip", number(1)}};
    store() = others;
    delegate.userDefaultsSave();
    for (const auto& other : others) {
        EXPECT_THAT(store(), Contains(other));
    }
}

TEST_F(Settings, ValuesChangedInARunComeBackInTheNext) {
    launch();
    setInterval("1", "17", "2");
    slider("fpsS").drag(24.0);
    button("slowB").currentState = 1;
    delegate.applicationWillTerminate();

    Sim next;
    next.defaults().values = sim.defaults().durableValues;
    AppDelegate nextDelegate(next.platform());
    nextDelegate.connectInterface(next.nib());
    nextDelegate.awakeFromNib();
    EXPECT_EQ(next.nib().textField("hInput").text, "1");
    EXPECT_EQ(next.nib().textField("mInput").text, "17");
    EXPECT_EQ(next.nib().textField("sInput").text, "2");
    EXPECT_EQ(next.nib().textField("fpsD").text, "( fps = 24 )");
    EXPECT_EQ(next.nib().button("slowB").currentState, 1);
    EXPECT_THAT(next.calls(), Not(Contains("NSBeep")));
    EXPECT_EQ(std::get<NSInteger>(next.defaults().values.at("iMinue")), 0);
}

TEST_F(Settings, ARunThatDoesNotEndNormallySavesNothing) {
    launch();
    const SimUserDefaults::Values before = store();
    setInterval("1", "17", "2");
    delegate.timeIntervalchanged(nullptr);
    sim.advance(10.0);
    EXPECT_EQ(store(), before);
}

TEST_F(Settings, TheCurrentFieldsAreSavedWhileCaptureRuns) {
    launchWithCamera();
    delegate.startRunning(nullptr);
    setInterval("0", "0", "42");
    delegate.applicationWillTerminate();
    EXPECT_THAT(store(), Contains(Pair("iSecond", number(42))));
}

TEST_F(Settings, ARateChangeOnlySetsTheReadOut) {
    slider("fpsS").drag(24.4);
    delegate.rateChanged(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("fpsD setStringValue: ( fps = 24 )"));
    slider("fpsS").drag(24.5);
    delegate.rateChanged(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("fpsD setStringValue: ( fps = 25 )"));
    EXPECT_EQ(compileFrameRate(), 25);
}

} // namespace
} // namespace vistrane
