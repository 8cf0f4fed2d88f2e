#include "platform/shown_text.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

#define REPLACED "\xEF\xBF\xBD"

TEST(ShownText, KeepsTextOfAnyScript) {
    for (const char* text : {"", "/tmp/a b.png", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xA5", "\xC2\xA0",
                             "\xED\x9F\xBF\xEE\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(shownText(text), text);
    }
}

TEST(ShownText, ReplacesEachControlCharacter) {
    EXPECT_EQ(shownText("a\nb\tc\r"), "a" REPLACED "b" REPLACED "c" REPLACED);
    EXPECT_EQ(shownText("\x1b[2J\x7f"), REPLACED "[2J" REPLACED);
    EXPECT_EQ(shownText(std::string("a\0b", 3)), "a" REPLACED "b");
    // The C1 control characters, including the one that starts a terminal command.
    EXPECT_EQ(shownText("\xC2\x80\xC2\x9B\xC2\x9F"), REPLACED REPLACED REPLACED);
}

TEST(ShownText, ReplacesEachInvalidByte) {
    EXPECT_EQ(shownText("a\xFF\xFE"), "a" REPLACED REPLACED);
    EXPECT_EQ(shownText("\x80z"), REPLACED "z");
    EXPECT_EQ(shownText("\xE2\x82"), REPLACED REPLACED); // cut short
    EXPECT_EQ(shownText("\xC3("), REPLACED "(");         // not followed up
    EXPECT_EQ(shownText("\xC1\x81"), REPLACED REPLACED); // too long for its value
    EXPECT_EQ(shownText("\xE0\x9F\xBF"), REPLACED REPLACED REPLACED);
    EXPECT_EQ(shownText("\xED\xA0\x80"), REPLACED REPLACED REPLACED); // half of a pair
    EXPECT_EQ(shownText("\xF4\x90\x80\x80"), REPLACED REPLACED REPLACED REPLACED);
}

#undef REPLACED

} // namespace
} // namespace vistrane
