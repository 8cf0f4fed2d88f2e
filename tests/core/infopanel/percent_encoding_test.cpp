#include "core/infopanel/percent_encoding.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(PercentEncoding, LeavesTheCharactersOfAHostAndNoOther) {
    const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                "-._~!$&'()*+,;=:[]";
    EXPECT_EQ(addingPercentEncoding(allowed), allowed);
    int count = 0;
    for (int byte = 0; byte < 256; ++byte) {
        count += isURLHostAllowed(static_cast<char>(byte)) ? 1 : 0;
    }
    EXPECT_EQ(count, static_cast<int>(allowed.size()));
}

TEST(PercentEncoding, TurnsEachOtherByteIntoTwoCapitalDigits) {
    EXPECT_EQ(addingPercentEncoding(" \"#%/<>?@\\^`{|}\n\x7f"),
              "%20%22%23%25%2F%3C%3E%3F%40%5C%5E%60%7B%7C%7D%0A%7F");
    EXPECT_EQ(addingPercentEncoding("\u00E4\u65E5\U0001F600"), "%C3%A4%E6%97%A5%F0%9F%98%80");
    // Bytes that are no text, and zeros.
    EXPECT_EQ(addingPercentEncoding(std::string_view("a\0\xFF", 3)), "a%00%FF");
    EXPECT_EQ(addingPercentEncoding(""), "");
}

} // namespace
} // namespace vistrane
