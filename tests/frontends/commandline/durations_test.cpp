#include "frontends/commandline/durations.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

std::optional<long long> secondsOf(const char* text) {
    const auto duration = parseDuration(text);
    return duration ? std::optional<long long>(duration->count()) : std::nullopt;
}

TEST(Durations, AreSecondsFieldsOrUnits) {
    EXPECT_EQ(secondsOf("90"), 90);
    EXPECT_EQ(secondsOf("0090"), 90);
    EXPECT_EQ(secondsOf("0"), 0);
    EXPECT_EQ(secondsOf("1:30"), 90);
    EXPECT_EQ(secondsOf("90:00"), 5400);
    EXPECT_EQ(secondsOf("1:02:3"), 3723);
    EXPECT_EQ(secondsOf("999:59:59"), 3599999);
    EXPECT_EQ(secondsOf("90s"), 90);
    EXPECT_EQ(secondsOf("10m"), 600);
    EXPECT_EQ(secondsOf("1h30m"), 5400);
    EXPECT_EQ(secondsOf("1h5s"), 3605);
    EXPECT_EQ(secondsOf("2h3m4s"), 7384);
    EXPECT_EQ(secondsOf("1000000h"), 3600000000);
}

TEST(Durations, OfAnyOtherFormAreRefused) {
    for (const char* text :
         {"",         "abc",       "-5",     "+5",     " 5",      "5 ",
          "0.5",      "1,5",       "0:75:0", "1:60",   "1:2:3:4", ":",
          "::",       "1:",        ":1",     "1::2",   "1:-2",    "1:+2",
          "h",        "s",         "10x",    "1m1h",   "1h1h",    "1h2",
          "1h-2m",    "1:30m",     "10M",    "1h 30m", "0x10",    "99999999999999999999",
          "1000001h", "3600000001"}) {
        EXPECT_EQ(secondsOf(text), std::nullopt) << text;
    }
}

class Moments : public testing::Test {
protected:
    Moments() {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
    }
    ~Moments() override {
        ::unsetenv("TZ");
        ::tzset();
    }

    /// 2026-03-28 12:00:00 in Berlin, the day before summer time begins.
    static constexpr std::time_t now = 1774695600;
};

TEST_F(Moments, AreTodayOrTomorrow) {
    EXPECT_EQ(parseMoment("12:01", now), now + 60);
    EXPECT_EQ(parseMoment("12:00:01", now), now + 1);
    EXPECT_EQ(parseMoment("23:59:59", now), now + 12 * 3600 - 1);
    // The night has an hour less.
    EXPECT_EQ(parseMoment("12:00", now), now + 23 * 3600);
    EXPECT_EQ(parseMoment("00:00", now), now + 12 * 3600);
}

TEST_F(Moments, MayHaveADate) {
    EXPECT_EQ(parseMoment("2026-03-28T12:01", now), now + 60);
    EXPECT_EQ(parseMoment("2026-03-29 12:00:00", now), now + 23 * 3600);
    EXPECT_EQ(parseMoment("2027-03-28 13:00", now), now + 365 * 86400);
}

TEST_F(Moments, OfAnyOtherFormOrInThePastAreRefused) {
    for (const char* text :
         {"", "noon", "12", "1:30", "24:00", "12:60", "12:00:60", "12:00:", "12:00x", "-1:00",
          "2026-03-28", "2026-03-28 12:00", "2026-03-28T11:59", "2026-02-29 12:00",
          "2026-13-01 12:00", "2026-04-31 12:00", "2026-3-29 12:00", "26-03-29 12:00"}) {
        EXPECT_EQ(parseMoment(text, now), std::nullopt) << text;
    }
}

} // namespace
} // namespace vistrane
