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

TEST_F(Interval, HoursAreReadAndClamped) {
    const std::pair<const char*, const char*> entries[] = {{"-2147483649", "0"},
                                                           {"-2147483648", "0"},
                                                           {"-1", "0"},
                                                           {"0", "0"},
                                                           {"1", "1"},
                                                           {"998", "998"},
                                                           {"999", "999"},
                                                           {"1000", "999"},
                                                           {"1001", "999"},
                                                           {"2147483647", "999"},
                                                           {"2147483648", "999"},
                                                           {"99999999999999999999", "999"},
                                                           // Other text.
                                                           {"", "0"},
                                                           {"7x", "7"},
                                                           {"7.9", "7"},
                                                           {"x7", "0"},
                                                           {"  12 ", "12"},
                                                           {"+3", "3"},
                                                           {"007", "7"},
                                                           {"- 5", "0"},
                                                           {"1e3", "1"},
                                                           {"\xFF", "0"}};
    for (const auto& [text, shown] : entries) {
        EXPECT_EQ(change(text, "0", "1"),
                  shown + std::string(":0:1 = ") + std::to_string(std::stoi(shown) * 3600 + 1));
    }
}

TEST_F(Interval, MinutesAndSecondsAreReadAndClamped) {
    const std::pair<const char*, int> entries[] = {
        {"-2147483648", 0}, {"-1", 0},  {"0", 0},           {"58", 58}, {"59", 59},
        {"60", 59},         {"61", 59}, {"2147483648", 59}, {"", 0},    {"5.9", 5}};
    for (const auto& [text, shown] : entries) {
        const std::string number = std::to_string(shown);
        EXPECT_EQ(change("1", text, "0"),
                  "1:" + number + ":0 = " + std::to_string(3600 + shown * 60));
        EXPECT_EQ(change("1", "0", text), "1:0:" + number + " = " + std::to_string(3600 + shown));
    }
}

} // namespace
} // namespace vistrane
