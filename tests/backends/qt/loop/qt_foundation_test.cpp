#include "backends/qt/loop/QtFoundation.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/backends/qt/loop/QtLoopBackend.h"
#include "tests/contract/BookmarkContract.h"
#include "tests/contract/DispatchContract.h"
#include "tests/contract/ThreadContract.h"
#include "tests/contract/TimerContract.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(QtLoop, BookmarkContract, QtLoopBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(QtLoop, DispatchContract, QtLoopBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(QtLoop, ThreadContract, QtLoopBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(QtLoop, TimerContract, QtLoopBackend, contract::Names);

namespace {

class QtFoundationTest : public ::testing::Test {
protected:
    std::vector<std::string> logged_;
    MemoryUserDefaults defaults_;
    QtRunLoop loop_;
    NotificationCenter notificationCenter_;
    QtFoundation foundation_{loop_, defaults_, notificationCenter_,
                             [this](const std::string& line) { logged_.push_back(line); }, "1.2.3"};
};

TEST_F(QtFoundationTest, TheLogGetsTheMessageUnchanged) {
    foundation_.NSLog("\nmoviePath=/a %d \xff.mov");
    EXPECT_THAT(logged_, ::testing::ElementsAre("\nmoviePath=/a %d \xff.mov"));
}

TEST_F(QtFoundationTest, ANotificationReachesTheObserversOfItsNameInOrder) {
    std::string called;
    foundation_.defaultCenter().addObserver([&] { called += '1'; }, "name");
    foundation_.defaultCenter().addObserver([&] { called += '2'; }, "name");
    foundation_.defaultCenter().addObserver([&] { called += 'x'; }, "other name");
    notificationCenter_.post("name");
    notificationCenter_.post("unknown name");
    EXPECT_EQ(called, "12");
}

} // namespace
} // namespace vistrane
