#include <clocale>
#include <cstdlib>

#include <gtest/gtest.h>

#include "frontends/window/open_window.h"

namespace vistrane {
namespace {

/// `main` set LC_ALL to "C.UTF-8". With the numbers of some other locales, the encoder would read
/// "0.5" as 0 and make worse movies.
TEST(WindowApplication, TakesOnlyTheCharacterSetOfTheLocale) {
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C");
}

} // namespace
} // namespace vistrane

int main(int argc, char** argv) {
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    testing::InitGoogleTest(&argc, argv);
    vistrane::makeApplication();
    return RUN_ALL_TESTS();
}
