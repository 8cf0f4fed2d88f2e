#include "core/capture/interval.h"
#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

TEST(TotalSeconds, WeighsHoursMinutesAndSeconds) {
    EXPECT_EQ(totalSeconds(0, 0, 1), 1);
    EXPECT_EQ(totalSeconds(1, 1, 1), 3661);
    EXPECT_EQ(totalSeconds(999, 59, 59), 3599999);
}

class Interval : public ControllerTest {
protected:
    void change(const std::string& hours, const std::string& minutes, const std::string& seconds) {
        setInterval(hours, minutes, seconds);
        delegate.timeIntervalchanged(nullptr);
    }
};

TEST_F(Interval, ThreeZerosBecomeOneSecond) {
    change("0", "0", "0");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("hInput setIntValue: 0", "mInput setIntValue: 0",
                                             "sInput setIntValue: 0", "sInput setStringValue: 1",
                                             "timeD setStringValue: ( t = 1 s )"));
    EXPECT_EQ(delegate.realInterval, 1);
}

TEST_F(Interval, NegativeTooLargeAndNoNumberAreCorrectedInOrder) {
    change("-5", "75", "abc");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("hInput setIntValue: -5", "hInput setStringValue: 0",
                            "mInput setIntValue: 75", "mInput setStringValue: 59",
                            "sInput setIntValue: 0", "timeD setStringValue: ( t = 3540 s )"));
    EXPECT_EQ(delegate.realInterval, 3540);
}

TEST_F(Interval, AThousandHoursBecomeTheHighestInterval) {
    change("1000", "59", "59");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("hInput setIntValue: 1000", "hInput setStringValue: 999",
                            "mInput setIntValue: 59", "sInput setIntValue: 59",
                            "timeD setStringValue: ( t = 3599999 s )"));
    EXPECT_EQ(delegate.realInterval, 3599999);
}

TEST_F(Interval, OneSecondAloneStays) {
    change("0", "0", "1");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("hInput setIntValue: 0", "mInput setIntValue: 0",
                            "sInput setIntValue: 1", "timeD setStringValue: ( t = 1 s )"));
    EXPECT_EQ(delegate.realInterval, 1);
    EXPECT_EQ(textField("sInput").text, "1");
}

TEST_F(Interval, ZeroSecondsStayBesideAMinuteOrAnHour) {
    change("0", "1", "0");
    EXPECT_EQ(delegate.realInterval, 60);
    EXPECT_EQ(textField("sInput").text, "0");
    change("1", "0", "0");
    EXPECT_EQ(delegate.realInterval, 3600);
    EXPECT_EQ(textField("sInput").text, "0");
}

TEST_F(Interval, NegativeSecondsAloneBecomeOne) {
    change("0", "0", "-1");
    EXPECT_EQ(textField("sInput").text, "1");
    EXPECT_EQ(delegate.realInterval, 1);
}

TEST_F(Interval, IsTakenWithoutASessionOrATimer) {
    change("0", "0", "7");
    EXPECT_EQ(delegate.myTimer, nullptr);
    EXPECT_EQ(textField("timeD").text, "( t = 7 s )");
}

struct Entry {
    const char* text;
    const char* shown;
};

class HoursEntry : public Interval, public ::testing::WithParamInterface<Entry> {};

TEST_P(HoursEntry, IsClamped) {
    change(GetParam().text, "0", "1");
    EXPECT_EQ(textField("hInput").text, GetParam().shown);
    EXPECT_EQ(delegate.realInterval, std::stoi(GetParam().shown) * 3600 + 1);
}

INSTANTIATE_TEST_SUITE_P(AtTheBoundaries, HoursEntry,
                         ::testing::Values(Entry{"-2147483649", "0"}, Entry{"-2147483648", "0"},
                                           Entry{"-1", "0"}, Entry{"0", "0"}, Entry{"1", "1"},
                                           Entry{"998", "998"}, Entry{"999", "999"},
                                           Entry{"1000", "999"}, Entry{"1001", "999"},
                                           Entry{"2147483647", "999"}, Entry{"2147483648", "999"},
                                           Entry{"99999999999999999999", "999"}));
INSTANTIATE_TEST_SUITE_P(OfOtherText, HoursEntry,
                         ::testing::Values(Entry{"", "0"}, Entry{"7x", "7"}, Entry{"7.9", "7"},
                                           Entry{"x7", "0"}, Entry{"  12 ", "12"}, Entry{"+3", "3"},
                                           Entry{"007", "7"}, Entry{"- 5", "0"}, Entry{"1e3", "1"},
                                           Entry{"\xFF", "0"}));

class SixtiethsEntry : public Interval, public ::testing::WithParamInterface<Entry> {};

TEST_P(SixtiethsEntry, OfMinutesIsClamped) {
    change("1", GetParam().text, "0");
    EXPECT_EQ(textField("mInput").text, GetParam().shown);
    EXPECT_EQ(delegate.realInterval, 3600 + std::stoi(GetParam().shown) * 60);
}

TEST_P(SixtiethsEntry, OfSecondsIsClamped) {
    change("1", "0", GetParam().text);
    EXPECT_EQ(textField("sInput").text, GetParam().shown);
    EXPECT_EQ(delegate.realInterval, 3600 + std::stoi(GetParam().shown));
}

INSTANTIATE_TEST_SUITE_P(AtTheBoundaries, SixtiethsEntry,
                         ::testing::Values(Entry{"-2147483648", "0"}, Entry{"-1", "0"},
                                           Entry{"0", "0"}, Entry{"58", "58"}, Entry{"59", "59"},
                                           Entry{"60", "59"}, Entry{"61", "59"},
                                           Entry{"2147483648", "59"}, Entry{"", "0"},
                                           Entry{"5.9", "5"}));

} // namespace
} // namespace vistrane
