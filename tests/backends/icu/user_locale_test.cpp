#include "backends/icu/user_locale.h"

#include <gtest/gtest.h>

#include "tests/support/Environment.h"

namespace vistrane {
namespace {

TEST(UserLocale, TheStrongestVariableThatIsSetDecides) {
    const Environment all("LC_ALL", "de_DE.UTF-8");
    const Environment time("LC_TIME", "fr_FR.UTF-8");
    const Environment language("LANG", "ja_JP.UTF-8");
    EXPECT_EQ(userLocale(LocaleCategory::time), "de_DE");
    const Environment noneAtAll("LC_ALL", nullptr);
    EXPECT_EQ(userLocale(LocaleCategory::time), "fr_FR");
    EXPECT_EQ(userLocale(LocaleCategory::collation), "ja_JP");
}

TEST(UserLocale, AnEmptyVariableCountsAsUnsetAndNoneGivesPosix) {
    const Environment all("LC_ALL", "");
    const Environment time("LC_TIME", "");
    const Environment language("LANG", "en_GB.UTF-8");
    EXPECT_EQ(userLocale(LocaleCategory::time), "en_GB");
    const Environment none("LANG", nullptr);
    EXPECT_EQ(userLocale(LocaleCategory::time), "en_US_POSIX");
}

TEST(UserLocale, PosixNamesBecomeIcuNames) {
    EXPECT_EQ(icuLocaleOfPosixName("C"), "en_US_POSIX");
    EXPECT_EQ(icuLocaleOfPosixName("C.UTF-8"), "en_US_POSIX");
    EXPECT_EQ(icuLocaleOfPosixName("POSIX"), "en_US_POSIX");
    EXPECT_EQ(icuLocaleOfPosixName("/usr/lib/locale/own"), "en_US_POSIX");
    EXPECT_EQ(icuLocaleOfPosixName("de_DE@euro"), "de_DE");
    EXPECT_EQ(icuLocaleOfPosixName("sr_RS.UTF-8@latin"), "sr_Latn_RS");
    EXPECT_EQ(icuLocaleOfPosixName("uz@cyrillic"), "uz_Cyrl");
    EXPECT_EQ(icuLocaleOfPosixName("ca_ES.UTF-8@valencia"), "ca_ES_VALENCIA");
    EXPECT_EQ(icuLocaleOfPosixName("th_TH.UTF-8@calendar=gregorian"), "th_TH@calendar=gregorian");
}

} // namespace
} // namespace vistrane
