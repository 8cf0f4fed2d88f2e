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

TEST(IcuDateFormatter, The30thOfDecember2026IsInAnotherYearForAmericansThanForGermans) {
    EXPECT_EQ(frameStamp("en_US.UTF-8", "UTC", 1798588800), "27-12-30-00-00-00");
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "UTC", 1798588800), "26-12-30-00-00-00");
}

TEST(IcuDateFormatter, DigitsAreTheLocales) {
    EXPECT_EQ(frameStamp("ar_EG.UTF-8", "UTC", 1772892309), "٢٦-٠٣-٠٧-١٤-٠٥-٠٩");
}

TEST(IcuDateFormatter, TheCalendarIsTheLocales) {
    EXPECT_EQ(format("th_TH.UTF-8", "UTC", "yyyy", 1772892309), "2569");
    EXPECT_EQ(format("th_TH.UTF-8@calendar=gregorian", "UTC", "yyyy", 1772892309), "2026");
    // The Buddhist calendar numbers its weeks' years as the Gregorian one does.
    EXPECT_EQ(frameStamp("th_TH.UTF-8", "UTC", 1772892309), "26-03-07-14-05-09");
    // 16 Esfand 1404.
    EXPECT_EQ(frameStamp("fa_IR.UTF-8", "UTC", 1772892309), "۰۴-۱۲-۱۶-۱۴-۰۵-۰۹");
}

TEST(IcuDateFormatter, AnUnknownLocaleStillFormats) {
    EXPECT_EQ(frameStamp("xx_nothing", "UTC", 1772892309), "26-03-07-14-05-09");
    EXPECT_EQ(frameStamp("]=,\xff", "UTC", 1772892309), "26-03-07-14-05-09");
}

TEST(IcuDateFormatter, TheTimeZoneIsTheUsers) {
    EXPECT_EQ(frameStamp("en_US.UTF-8", "Europe/Berlin", 1772892309), "26-03-07-15-05-09");
    EXPECT_EQ(frameStamp("en_US.UTF-8", ":Asia/Kathmandu", 1772892309), "26-03-07-19-50-09");
    EXPECT_EQ(frameStamp("en_US.UTF-8", "/usr/share/zoneinfo/Asia/Tokyo", 1772892309),
              "26-03-07-23-05-09");
}

TEST(IcuDateFormatter, TheZoneDecidesTheWeeksYear) {
    // A second after New Year in Berlin, still the old year in UTC: the ISO week's year is 2026.
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "Europe/Berlin", 1798758001), "26-01-01-00-00-01");
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "UTC", 1798758001), "26-12-31-23-00-01");
}

TEST(IcuDateFormatter, TheHourComesTwiceWhenDaylightSavingEnds) {
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "Europe/Berlin", 1792888200), "26-10-25-02-30-00");
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "Europe/Berlin", 1792891800), "26-10-25-02-30-00");
    EXPECT_EQ(frameStamp("de_DE.UTF-8", "Europe/Berlin", 1792895400), "26-10-25-03-30-00");
}

TEST(IcuDateFormatter, ZoneRulesAreObeyed) {
    const char* rules = "CET-1CEST,M3.5.0,M10.5.0/3";
    EXPECT_EQ(frameStamp("de_DE.UTF-8", rules, 1792888200), "26-10-25-02-30-00");
    EXPECT_EQ(frameStamp("de_DE.UTF-8", rules, 1792891800), "26-10-25-02-30-00");
    EXPECT_EQ(frameStamp("en_US.UTF-8", "<+0330>-3:30", 1772892309), "26-03-07-17-35-09");
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
