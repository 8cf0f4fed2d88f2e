#include "backends/posix/settings_text.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistrane {
namespace {

Settings settings() {
    using Limits = std::numeric_limits<std::int64_t>;
    return {{"iFPS", std::int64_t{30}},
            {"least", Limits::min()},
            {"most", Limits::max()},
            {"iData", std::vector<std::uint8_t>{0x76, 0x02, 0xff}},
            {"nothing", std::vector<std::uint8_t>{}},
            {"text", std::string("two\nlines, \"quoted\", \\, \xff")},
            {"", std::string()},
            {"a = \"b\"\n\xc3\xa4", std::int64_t{-1}}};
}

TEST(SettingsText, EverythingComesBack) {
    const SettingsResult result = parseSettings(settingsText(settings()));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.settings, settings());
}

TEST(SettingsText, NoSettingsComeBack) {
    const SettingsResult result = parseSettings(settingsText({}));
    EXPECT_EQ(result.error, "");
    EXPECT_TRUE(result.settings.empty());
}

TEST(SettingsText, APersonCanReadIt) {
    EXPECT_EQ(settingsText({{"iFPS", std::int64_t{30}},
                            {"iData", std::vector<std::uint8_t>{0x76, 0x02, 0xff}},
                            {"name", std::string("a\n")}}),
              "Vistrane settings 1\n"
              "\"iData\" = <76 02 ff>\n"
              "\"iFPS\" = 30\n"
              "\"name\" = \"a\\0a\"\n"
              "end\n");
}

TEST(SettingsText, EveryBeginningOfAFileIsRefused) {
    const std::string text = settingsText(settings());
    for (std::size_t length = 0; length < text.size(); ++length) {
        const SettingsResult result = parseSettings(text.substr(0, length));
        EXPECT_NE(result.error, "") << length;
        EXPECT_TRUE(result.settings.empty()) << length;
    }
}

TEST(SettingsText, LinesOfAnotherFormAreRefusedWithTheirNumber) {
    for (const std::string line :
         {"iFPS = 30", "\"iFPS\" 30", "\"iFPS\" = ", "\"iFPS\" = 30 ", "\"iFPS\" = +30",
          "\"iFPS\" = 9223372036854775808", "\"iFPS\" = 3.5", "\"iFPS\" = \"30", "\"iFPS = 30",
          "\"a\" = <0>", "\"a\" = <00 1>", "\"a\" = <0011>", "\"a\" = <00 >", "\"a\" = <FF>",
          "\"a\" = \"\\0\"", "\"a\" = \"\\zz\"", "\"a\" = \"\t\"", "", "end "}) {
        const SettingsResult result = parseSettings("Vistrane settings 1\n" + line + "\nend\n");
        EXPECT_EQ(result.error, "line 2 cannot be understood") << line;
        EXPECT_TRUE(result.settings.empty()) << line;
    }
}

TEST(SettingsText, AnotherVersionOrSomethingBehindTheEndIsRefused) {
    EXPECT_EQ(parseSettings("Vistrane settings 2\nend\n").error, "line 1 cannot be understood");
    EXPECT_EQ(parseSettings("end\n").error, "line 1 cannot be understood");
    EXPECT_EQ(parseSettings("Vistrane settings 1\nend\nend\n").error,
              "line 3 cannot be understood");
}

TEST(SettingsText, AKeyThatComesTwiceIsRefused) {
    EXPECT_EQ(parseSettings("Vistrane settings 1\n\"a\" = 1\n\"a\" = 2\nend\n").error,
              "line 3 cannot be understood");
}

} // namespace
} // namespace vistrane
