#include <gtest/gtest.h>

#include "backends/sim/Sim.h"

namespace vistrane {
namespace {

constexpr double day = 86400.0;
/// 2026-01-01 00:00:00 UTC, a Thursday.
constexpr double newYear2026 = 1767225600.0;

class SimDates : public ::testing::Test {
protected:
    std::string format(const std::string& pattern, double date) {
        const auto formatter = sim.platform().foundation.dateFormatter();
        formatter->setDateFormat(pattern);
        return formatter->stringFromDate({date});
    }

    Sim sim;
};

TEST_F(SimDates, EveryLetterIsPaddedToItsCount) {
    const double date = newYear2026 + 35 * day + 9 * 3600 + 3 * 60 + 7;
    EXPECT_EQ(format("yyyy yy Y M MM d dd D DD DDD H HH m mm s ss", date),
              "2026 26 2026 2 02 5 05 36 36 036 9 09 3 03 7 07");
}

TEST_F(SimDates, TheDayOfTheYearTakesAsManyDigitsAsItNeeds) {
    EXPECT_EQ(format("DD", newYear2026 + 8 * day), "09");
    EXPECT_EQ(format("DD", newYear2026 + 98 * day), "99");
    EXPECT_EQ(format("DD", newYear2026 + 99 * day), "100");
    EXPECT_EQ(format("DD", newYear2026 + 364 * day), "365");
}

TEST_F(SimDates, TheWeekYearOfTheUnitedStatesTurnsOnTheSundayBeforeNewYear) {
    // 2025-12-27 is a Saturday.
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 - 5 * day), "2025 2025-12-27");
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 - 4 * day), "2026 2025-12-28");
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026), "2026 2026-01-01");
}

TEST_F(SimDates, TheWeekYearOfIsoTurnsWithTheWeekThatHoldsTheFirstThursday) {
    sim.dateRules().weeks = SimWeekRule::iso8601();
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 - 4 * day), "2025 2025-12-28");
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 - 3 * day), "2026 2025-12-29");
    // 2027-01-01 is a Friday: it still belongs to the last week of 2026.
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 + 365 * day), "2026 2027-01-01");
    EXPECT_EQ(format("YYYY yyyy-MM-dd", newYear2026 + 368 * day), "2027 2027-01-04");
}

TEST_F(SimDates, ADateBefore1970IsFormattedToo) {
    EXPECT_EQ(format("yyyy-MM-dd-HH-mm-ss", -1.0), "1969-12-31-23-59-59");
}

TEST_F(SimDates, AFixedAnswerIsGivenForEveryDate) {
    sim.dateRules().fixedAnswer = "stamp";
    EXPECT_EQ(format("yyyy", 0.0), "stamp");
}

class SimOrder : public ::testing::Test {
protected:
    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options) {
        return sim.platform().foundation.currentLocale()->compare(first, second, options,
                                                                  {0, first.size()});
    }

    Sim sim;
};

TEST_F(SimOrder, DigitRunsCompareByValueOnlyWhenAsked) {
    EXPECT_EQ(compare("frame9", "frame10", NSNumericSearch), NSOrderedAscending);
    EXPECT_EQ(compare("frame9", "frame10", 0), NSOrderedDescending);
    EXPECT_EQ(compare("a007b", "a7b", NSNumericSearch), NSOrderedSame);
    EXPECT_EQ(compare("99999999999999999999999998", "99999999999999999999999999", NSNumericSearch),
              NSOrderedAscending);
}

TEST_F(SimOrder, CaseAndWidthAreIgnoredOnlyWhenAsked) {
    EXPECT_EQ(compare("Frame", "fRAME", NSCaseInsensitiveSearch), NSOrderedSame);
    EXPECT_EQ(compare("B", "a", 0), NSOrderedAscending);
    EXPECT_EQ(compare("\uFF21", "A", NSWidthInsensitiveSearch), NSOrderedSame);
    EXPECT_EQ(compare("\uFF21", "A", 0), NSOrderedDescending);
}

TEST_F(SimOrder, AForcedOrderMakesOnlyEqualBytesTheSame) {
    constexpr std::uint32_t all = 833;
    EXPECT_EQ(compare("Frame1", "frame1", all), NSOrderedAscending);
    EXPECT_EQ(compare("frame1", "Frame1", all), NSOrderedDescending);
    EXPECT_EQ(compare("a007", "a7", all), NSOrderedAscending);
    EXPECT_EQ(compare("a7", "a7", all), NSOrderedSame);
}

TEST_F(SimOrder, AShorterTextComesFirst) {
    EXPECT_EQ(compare("frame", "frame1", 833), NSOrderedAscending);
    EXPECT_EQ(compare("", "", 833), NSOrderedSame);
}

} // namespace
} // namespace vistrane
