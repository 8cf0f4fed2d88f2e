#include "core/capture/interval.h"
#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

TEST(TotalSeconds, WeighsHoursMinutesAndSeconds) {
    EXPECT_EQ(totalSeconds(0, 0, 1), 1);
    EXPECT_EQ(totalSeconds(1, 1, 1), 3661);
    EXPECT_EQ(totalSeconds(999, 59, 59), 3599999);
}

class Interval : public ControllerTest {
protected:
    /// Edits the fields and says what the interface shows then.
    std::string change(const std::string& hours, const std::string& minutes,
                       const std::string& seconds) {
        setInterval(hours, minutes, seconds);
        delegate.timeIntervalchanged(nullptr);
        EXPECT_EQ(textField("timeD").text,
                  "( t = " + std::to_string(delegate.realInterval) + " s )");
        return interval() + " = " + std::to_string(delegate.realInterval);
    }
};

TEST_F(Interval, OnlyThreeZerosBecomeOneSecond) {
    EXPECT_EQ(change("0", "0", "0"), "0:0:1 = 1");
    EXPECT_EQ(change("0", "0", "-1"), "0:0:1 = 1");
    EXPECT_EQ(change("0", "0", "1"), "0:0:1 = 1");
    EXPECT_EQ(change("0", "1", "0"), "0:1:0 = 60");
    EXPECT_EQ(change("1", "0", "0"), "1:0:0 = 3600");
}

TEST_F(Interval, NegativeTooLargeAndNoNumberAreCorrected) {
    EXPECT_EQ(change("-5", "75", "abc"), "0:59:0 = 3540");
    EXPECT_EQ(change("1000", "59", "59"), "999:59:59 = 3599999");
}

TEST_F(Interval, IsTakenWithoutASessionOrATimer) {
    EXPECT_EQ(change("0", "0", "7"), "0:0:7 = 7");
    EXPECT_EQ(delegate.myTimer, nullptr);
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
