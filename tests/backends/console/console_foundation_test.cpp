#include "backends/console/ConsoleFoundation.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <unistd.h>

#include "backends/console/MemoryUserDefaults.h"
#include "tests/backends/posix/Pipe.h"

namespace vistrane {
namespace {

class ConsoleFoundationTest : public ::testing::Test {
protected:
    std::string written() {
        char bytes[1000];
        const ssize_t count = read(pipe_.ends[0], bytes, sizeof bytes);
        return std::string(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }

    Pipe pipe_;
    ConsoleOutput output_{pipe_.ends[1]};
    MemoryUserDefaults defaults_;
    ConsoleRunLoop loop_;
    ConsoleFoundation foundation_{loop_, defaults_, output_, "1.2.3"};
};

TEST_F(ConsoleFoundationTest, TheLogGetsTheMessageUnchanged) {
    foundation_.NSLog("\nmoviePath=/a %d \xff.mov");
    EXPECT_EQ(written(), "\nmoviePath=/a %d \xff.mov\n");
}

TEST_F(ConsoleFoundationTest, EveryFormatterIsItsOwn) {
    const auto first = foundation_.dateFormatter();
    const auto second = foundation_.dateFormatter();
    first->setDateFormat("'first'");
    second->setDateFormat("'second'");
    EXPECT_EQ(first->stringFromDate({0.0}), "first");
    EXPECT_EQ(second->stringFromDate({0.0}), "second");
}

TEST_F(ConsoleFoundationTest, NamesAreComparedByTheUsersLocale) {
    const auto locale = foundation_.currentLocale();
    EXPECT_EQ(locale->compare("frame2", "frame10", 833, {0, 6}), NSOrderedAscending);
}

TEST_F(ConsoleFoundationTest, TheFileSystemIsTheRealOne) {
    bool isDirectory = false;
    EXPECT_TRUE(foundation_.defaultManager().fileExistsAtPath("/", isDirectory));
    EXPECT_TRUE(isDirectory);
}

TEST_F(ConsoleFoundationTest, ALaterDateIsLater) {
    EXPECT_GT(foundation_.dateWithTimeIntervalSinceNow(1000.0).timeIntervalSince1970,
              foundation_.date().timeIntervalSince1970);
}

TEST_F(ConsoleFoundationTest, ThereIsNoAppearanceUnlessSeeded) {
    EXPECT_EQ(foundation_.standardUserDefaults().stringForKey("AppleInterfaceStyle"), std::nullopt);
    defaults_.setString("Dark", "AppleInterfaceStyle");
    EXPECT_EQ(foundation_.standardUserDefaults().stringForKey("AppleInterfaceStyle"), "Dark");
    EXPECT_EQ(foundation_.standardUserDefaults().integerForKey("AppleInterfaceStyle"), 0);
}

TEST_F(ConsoleFoundationTest, NoNoticeEverComes) {
    foundation_.defaultCenter().addObserver([] { ADD_FAILURE(); },
                                            "AppleInterfaceThemeChangedNotification");
    loop_.runUntilDate({0.0});
    EXPECT_TRUE(foundation_.startAccessingSecurityScopedResource(NSURL::fileURLWithPath("/")));
}

} // namespace
} // namespace vistrane
