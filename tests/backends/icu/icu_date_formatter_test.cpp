#include "backends/icu/IcuDateFormatter.h"

#include <chrono>
#include <cstdio>
#include <limits>

#include "tests/contract/DateFormatterContract.h"
#include "tests/support/Environment.h"

namespace vistrane {
namespace {

struct IcuDateFormatterBackend {
    std::unique_ptr<NSDateFormatter> formatter() { return std::make_unique<IcuDateFormatter>(); }

    Environment locale{"LC_ALL", "en_US.UTF-8"};
    Environment zone{"TZ", "UTC"};
};

std::string format(const char* locale, const char* zone, const char* pattern, double seconds) {
    const Environment all("LC_ALL", locale);
    const Environment tz("TZ", zone);
    IcuDateFormatter formatter;
    formatter.setDateFormat(pattern);
    return formatter.stringFromDate({seconds});
}

std::string frameStamp(const char* locale, const char* zone, double seconds) {
    return format(locale, zone, "YY-MM-dd-HH-mm-ss", seconds);
}

/// The year that owns the week of a day: a week belongs to the year that has `minimumDays` of it.
int weekYear(std::chrono::sys_days day, std::chrono::weekday firstDay, int minimumDays) {
    using namespace std::chrono;
    const auto startOfWeek = day - (weekday(day) - firstDay);
    const auto deciding = startOfWeek + days(7 - minimumDays);
    return static_cast<int>(year_month_day(deciding).year());
}

struct WeekRule {
    const char* locale;
    std::chrono::weekday firstDay;
    int minimumDays;
};

std::string expectedStamp(std::chrono::sys_days day, const WeekRule& rule) {
    const std::chrono::year_month_day date(day);
    char text[32];
    std::snprintf(text, sizeof text, "%02d-%02u-%02u-12-00-00",
                  weekYear(day, rule.firstDay, rule.minimumDays) % 100,
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Icu, DateFormatterContract, IcuDateFormatterBackend,
                               contract::Names);

namespace {

TEST(IcuDateFormatter, NewYearFollowsTheWeekRulesOfTheLocale) {
    using namespace std::chrono;
    const WeekRule rules[] = {{"en_US.UTF-8", Sunday, 1}, {"de_DE.UTF-8", Monday, 4},
                              {"fr_FR.UTF-8", Monday, 4}, {"en_GB.UTF-8", Monday, 4},
                              {"ja_JP.UTF-8", Sunday, 1}, {"C", Sunday, 1}};
    const Environment zone("TZ", "UTC");
    for (const WeekRule& rule : rules) {
        const Environment locale("LC_ALL", rule.locale);
        IcuDateFormatter formatter;
        formatter.setDateFormat("YY-MM-dd-HH-mm-ss");
        for (int number = 1999; number < 2032; ++number) {
            const sys_days newYear = year(number) / January / 1;
            for (sys_days day = newYear - days(8); day < newYear + days(8); day += days(1)) {
                const double noon =
                    static_cast<double>((day.time_since_epoch() / days(1)) * 86400LL + 43200);
                EXPECT_EQ(formatter.stringFromDate({noon}), expectedStamp(day, rule))
                    << rule.locale;
            }
        }
    }
}

TEST(IcuDateFormatter, LocaleAndTimeZoneAreTheUsers) {
    constexpr double march = 1772892309; // 2026-03-07 14:05:09 UTC
    const char* const rules = "CET-1CEST,M3.5.0,M10.5.0/3";
    const struct {
        const char* locale;
        const char* zone;
        double seconds;
        const char* stamp;
    } cases[] = {
        // First, because ICU keeps the process's first locale for those that it does not know.
        {"xx_nothing", "UTC", march, "26-03-07-14-05-09"},
        {"]=,\xff", "UTC", march, "26-03-07-14-05-09"},
        {"ar_EG.UTF-8", "UTC", march, "٢٦-٠٣-٠٧-١٤-٠٥-٠٩"},
        // The Buddhist calendar numbers its weeks' years as the Gregorian one does.
        {"th_TH.UTF-8", "UTC", march, "26-03-07-14-05-09"},
        // 16 Esfand 1404.
        {"fa_IR.UTF-8", "UTC", march, "۰۴-۱۲-۱۶-۱۴-۰۵-۰۹"},
        {"en_US.UTF-8", "Europe/Berlin", march, "26-03-07-15-05-09"},
        {"en_US.UTF-8", ":Asia/Kathmandu", march, "26-03-07-19-50-09"},
        {"en_US.UTF-8", "/usr/share/zoneinfo/Asia/Tokyo", march, "26-03-07-23-05-09"},
        {"en_US.UTF-8", "<+0330>-3:30", march, "26-03-07-17-35-09"},
        // A second after New Year in Berlin, still the old year in UTC: the ISO week's year is
        // 2026.
        {"de_DE.UTF-8", "Europe/Berlin", 1798758001, "26-01-01-00-00-01"},
        {"de_DE.UTF-8", "UTC", 1798758001, "26-12-31-23-00-01"},
        // One hour occurs twice when daylight saving time ends.
        {"de_DE.UTF-8", "Europe/Berlin", 1792888200, "26-10-25-02-30-00"},
        {"de_DE.UTF-8", "Europe/Berlin", 1792891800, "26-10-25-02-30-00"},
        {"de_DE.UTF-8", "Europe/Berlin", 1792895400, "26-10-25-03-30-00"},
        {"de_DE.UTF-8", rules, 1792888200, "26-10-25-02-30-00"},
        {"de_DE.UTF-8", rules, 1792891800, "26-10-25-02-30-00"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(frameStamp(each.locale, each.zone, each.seconds), each.stamp)
            << each.locale << ", " << each.zone;
    }
    EXPECT_EQ(format("th_TH.UTF-8", "UTC", "yyyy", march), "2569");
    EXPECT_EQ(format("th_TH.UTF-8@calendar=gregorian", "UTC", "yyyy", march), "2026");
}

TEST(IcuDateFormatter, OneFormatterServesDatesOnBothSidesOfAChange) {
    const Environment all("LC_ALL", "de_DE.UTF-8");
    const Environment zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    IcuDateFormatter formatter;
    formatter.setDateFormat("HH");
    EXPECT_EQ(formatter.stringFromDate({1783000000}), "15");
    EXPECT_EQ(formatter.stringFromDate({1772892309}), "15");
    EXPECT_EQ(formatter.stringFromDate({1783000000}), "15");
}

TEST(IcuDateFormatter, FractionsAreRoundedDownToTheMillisecond) {
    EXPECT_EQ(format("en_US.UTF-8", "UTC", "ss.SSS", 0.9999), "00.999");
    EXPECT_EQ(format("en_US.UTF-8", "UTC", "ss.SSS", 1.5), "01.500");
    // Also before 1970.
    EXPECT_EQ(format("en_US.UTF-8", "UTC", "yyyy-MM-dd HH:mm:ss.SSS", -0.0001),
              "1969-12-31 23:59:59.999");
    EXPECT_EQ(format("en_US.UTF-8", "UTC", "yyyy-MM-dd HH:mm:ss", -86400.0), "1969-12-31 00:00:00");
}

TEST(IcuDateFormatter, AnyNumberIsTakenAsADate) {
    using Limits = std::numeric_limits<double>;
    for (const double seconds : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                 Limits::max(), Limits::lowest(), Limits::denorm_min(), 1e12}) {
        EXPECT_FALSE(frameStamp("en_US.UTF-8", "Europe/Berlin", seconds).empty());
    }
}

TEST(IcuDateFormatter, WithoutAPatternOrWithABadOneThereIsNoHarm) {
    EXPECT_EQ(IcuDateFormatter().stringFromDate({0.0}), "");
    EXPECT_NO_FATAL_FAILURE(format("en_US.UTF-8", "UTC", "'unclosed", 0.0));
    EXPECT_NO_FATAL_FAILURE(format("en_US.UTF-8", "UTC", "bbbbbbbbb\xff", 0.0));
}

} // namespace
} // namespace vistrane
