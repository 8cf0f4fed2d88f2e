#include <algorithm>

#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

SimUserDefaults::Value number(NSInteger value) {
    return value;
}

// The order of loading and saving is tested with the life cycle, whose steps they are.
class Settings : public ControllerTest {
protected:
    SimUserDefaults::Values& store() { return sim.defaults().values; }
    /// Loads the settings and says what the interface shows then.
    std::string load(const SimUserDefaults::Values& values) {
        store() = values;
        sim.takeCalls();
        delegate.userDefaultsLoad();
        return interval() + " " + textField("timeD").text + " " + textField("fpsD").text;
    }
    bool beeped() {
        const auto calls = sim.calls();
        EXPECT_LE(std::count(calls.begin(), calls.end(), "NSBeep"), 1);
        return std::count(calls.begin(), calls.end(), "NSBeep") == 1;
    }
};

TEST_F(Settings, TheFirstRunStoresTheDefaultsAndBeepsOnce) {
    EXPECT_EQ(load({}), "0:0:5 ( t = 5 s ) ( fps = 30 )");
    EXPECT_THAT(store(),
                UnorderedElementsAre(Pair("firstTimeRunning", number(1)), Pair("iSlow", number(0)),
                                     Pair("iFPS", number(30)), Pair("iHour", number(0)),
                                     Pair("iMinue", number(0)), Pair("iSecond", number(5))));
    EXPECT_EQ(delegate.realInterval, 5);
    EXPECT_TRUE(beeped());
}

TEST_F(Settings, ALaterRunStoresNothingAndRestoresTheSavedValues) {
    const SimUserDefaults::Values saved = {{"firstTimeRunning", number(1)},
                                           {"iSlow", number(1)},
                                           {"iFPS", number(24)},
                                           {"iHour", number(2)},
                                           {"iMinute", number(30)},
                                           {"iMinue", number(44)},
                                           {"iSecond", number(15)}};
    EXPECT_EQ(load(saved), "2:30:15 ( t = 9015 s ) ( fps = 24 )");
    EXPECT_EQ(button("slowB").currentState, 1);
    EXPECT_EQ(delegate.realInterval, 9015);
    EXPECT_EQ(store(), saved);
    EXPECT_FALSE(beeped());
}

TEST_F(Settings, AnyMarkerOtherThanOneStoresTheDefaultsButNoMinute) {
    for (const NSInteger marker : {NSInteger{2}, NSInteger{0}, NSInteger{-1}, NSInteger{1} << 32}) {
        EXPECT_EQ(load({{"firstTimeRunning", number(marker)},
                        {"iSlow", number(1)},
                        {"iFPS", number(10)},
                        {"iHour", number(7)},
                        {"iMinute", number(8)},
                        {"iSecond", number(9)}}),
                  "0:8:5 ( t = 485 s ) ( fps = 30 )");
        EXPECT_THAT(store(),
                    UnorderedElementsAre(Pair("firstTimeRunning", number(1)),
                                         Pair("iSlow", number(0)), Pair("iFPS", number(30)),
                                         Pair("iHour", number(0)), Pair("iMinue", number(0)),
                                         Pair("iMinute", number(8)), Pair("iSecond", number(5))));
        EXPECT_TRUE(beeped());
    }
}

TEST_F(Settings, AMarkerThatIsNoNumberCountsAsTheFirstRun) {
    load({{"firstTimeRunning", std::string("abc")}});
    EXPECT_TRUE(beeped());
    load({{"firstTimeRunning", SimUserDefaults::Bytes{1}}});
    EXPECT_TRUE(beeped());
    // But digits are read as a number.
    load({{"firstTimeRunning", std::string("1")}, {"iHour", std::string("7")}});
    EXPECT_FALSE(beeped());
    EXPECT_EQ(interval(), "7:0:0");
}

TEST_F(Settings, StoredValuesOfAnySizeEndInTheRange) {
    EXPECT_EQ(load({{"firstTimeRunning", number(1)}, {"iHour", number(5000)}}),
              "999:0:0 ( t = 3596400 s ) ( fps = 1 )");
    // The slider's own range limits the rate.
    EXPECT_EQ(load({{"firstTimeRunning", number(1)},
                    {"iFPS", number(NSInteger{1} << 40)},
                    {"iHour", number(NSInteger{1} << 40)},
                    {"iMinute", number(-3)},
                    {"iSecond", number(INT64_MIN)}}),
              "999:0:0 ( t = 3596400 s ) ( fps = 60 )");
}

TEST_F(Settings, MissingValuesReadAsZero) {
    EXPECT_EQ(load({{"firstTimeRunning", number(1)}}), "0:0:1 ( t = 1 s ) ( fps = 1 )");
    EXPECT_EQ(button("slowB").currentState, 0);
}

TEST_F(Settings, TheLoopRunsForAFifthOfASecondBetweenTheStoreAndTheControls) {
    bool ran = false;
    sim.at(0.2, [&] {
        ran = true;
        EXPECT_THAT(store(), Contains(Pair("iSecond", number(5))));
        setInterval("77", "77", "77");
    });
    EXPECT_EQ(load({{"iHour", number(3)}}), "0:0:5 ( t = 5 s ) ( fps = 30 )");
    EXPECT_TRUE(ran);
    EXPECT_EQ(sim.loop().now(), 200000000);
}

TEST_F(Settings, SavingStoresWhatTheControlsHoldUnclampedAndSynchronises) {
    button("slowB").currentState = 1;
    slider("fpsS").drag(12.0);
    setInterval("1099511627776", "-5", "abc");
    const SimUserDefaults::Values others = {
        {"iMinue", number(44)}, {"firstTimeRunning", number(7)}, {"iTip", number(1)}};
    store() = others;
    delegate.userDefaultsSave();
    EXPECT_THAT(sim.defaults().durableValues,
                UnorderedElementsAre(Pair("iSlow", number(1)), Pair("iFPS", number(12)),
                                     Pair("iHour", number(1099511627776)),
                                     Pair("iMinute", number(-5)), Pair("iSecond", number(0)),
                                     Pair("iMinue", number(44)),
                                     Pair("firstTimeRunning", number(7)), Pair("iTip", number(1))));
    EXPECT_EQ(interval(), "1099511627776:-5:abc");
}

TEST_F(Settings, ARunThatDoesNotEndNormallySavesNothing) {
    launch();
    const SimUserDefaults::Values before = store();
    setInterval("1", "17", "2");
    delegate.timeIntervalchanged(nullptr);
    sim.advance(10.0);
    EXPECT_EQ(store(), before);
}

TEST_F(Settings, ARateChangeOnlySetsTheReadOut) {
    for (const auto& [rate, text] : {std::pair(24.4, "24"), std::pair(24.5, "25")}) {
        slider("fpsS").drag(rate);
        delegate.rateChanged(nullptr);
        EXPECT_THAT(
            sim.takeCalls(),
            ::testing::ElementsAre(std::string("fpsD setStringValue: ( fps = ") + text + " )"));
    }
    EXPECT_EQ(compileFrameRate(), 25);
}

} // namespace
} // namespace vistrane
