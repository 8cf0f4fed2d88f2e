#include "backends/qt/system/SleepInhibitor.h"

#include <QDBusUnixFileDescriptor>
#include <QTest>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/FakeServices.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

constexpr char loginInhibit[] = "org.freedesktop.login1.Manager.Inhibit";
constexpr char saverInhibit[] = "org.freedesktop.ScreenSaver.Inhibit";

class SleepInhibitorTest : public ::testing::Test {
protected:
    ~SleepInhibitorTest() override { services_.reset(); }

    template <typename Condition>
    static bool waitFor(Condition condition) {
        constexpr int timeoutMilliseconds = 60000;
        return QTest::qWaitFor(condition, timeoutMilliseconds);
    }
    bool waitUntilCalled(const std::string& call, int times = 1) {
        return waitFor([&] { return services_.countOf(call) >= times; });
    }
    static void waitShortly() { QTest::qWait(50); }

    void offerScreenSaver() {
        services_.offer("org.freedesktop.ScreenSaver");
        services_.answer(saverInhibit, {QVariant(4711U)});
        services_.answer("org.freedesktop.ScreenSaver.UnInhibit", {});
    }

    FakeServices& services_ = FakeServices::shared();
    std::vector<std::string> log_;
    SleepInhibitor inhibitor_{[this](const std::string& line) { log_.push_back(line); }};
};

TEST_F(SleepInhibitorTest, AsksThePortalForEachCaptureAndEndsItsRequest) {
    services_.offerInhibition();
    for (int times = 1; times <= 2; ++times) {
        inhibitor_.setActive(true);
        inhibitor_.setActive(true);
        EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 1; }));
        waitShortly();
        inhibitor_.setActive(false);
        EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 0; }));
        EXPECT_EQ(services_.countOf("portal.Inhibit"), times);
        EXPECT_EQ(services_.countOf("Close()"), times);
    }
    EXPECT_THAT(log_, ElementsAre());
}

TEST_F(SleepInhibitorTest, AsksTheLoginManagerNextAndReleasesItsLock) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    services_.offer("org.freedesktop.login1");
    services_.answer(loginInhibit, {QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))});
    ::close(ends[1]);
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitUntilCalled("login1.Manager.Inhibit(sleep:idle, Vistrane"));
    waitShortly();
    services_.answer(loginInhibit, {});
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), -1) << "the lock is held";
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitFor([&] { return ::read(ends[0], &byte, 1) == 0; })) << "the lock is free";
    ::close(ends[0]);
}

TEST_F(SleepInhibitorTest, AsksTheScreenSaverLast) {
    offerScreenSaver();
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.Inhibit"));
    waitShortly();
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.UnInhibit(4711)"));
}

TEST_F(SleepInhibitorTest, AnInhibitionThatIsGrantedTooLateIsReleased) {
    services_.offerInhibition();
    inhibitor_.setActive(true);
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitUntilCalled("Close"));
    EXPECT_EQ(services_.inhibitions(), 0);
    EXPECT_FALSE(inhibitor_.isActive());
}

TEST_F(SleepInhibitorTest, ALackOfServicesIsLoggedOnce) {
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitFor([&] { return !log_.empty(); }));
    inhibitor_.setActive(false);
    inhibitor_.setActive(true);
    waitShortly();
    EXPECT_EQ(log_.size(), 1U);
}

} // namespace
} // namespace vistrane
