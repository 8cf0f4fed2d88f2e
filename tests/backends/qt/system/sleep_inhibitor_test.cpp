#include "backends/qt/system/SleepInhibitor.h"

#include <QDBusUnixFileDescriptor>
#include <QTest>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/backends/qt/longest_wait.h"
#include "tests/support/Environment.h"
#include "tests/support/FakeServices.h"
#include "tests/support/SilentSocket.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

constexpr char portal[] = "org.freedesktop.portal.Desktop";
constexpr char loginInhibit[] = "org.freedesktop.login1.Manager.Inhibit";
constexpr char saverInhibit[] = "org.freedesktop.ScreenSaver.Inhibit";

class SleepInhibitorTest : public ::testing::Test {
protected:
    ~SleepInhibitorTest() override { services_.reset(); }

    template <typename Condition>
    static bool waitFor(Condition condition) {
        return QTest::qWaitFor(condition, longestWait);
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

TEST_F(SleepInhibitorTest, AsksAgainWhenTheServiceThatGrantedItIsRestarted) {
    services_.offerInhibition();
    inhibitor_.setActive(true);
    for (int times = 1; times <= 3; ++times) {
        EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 1; }));
        EXPECT_TRUE(waitUntilCalled("portal.Inhibit", times));
        services_.withdraw(portal);
        services_.offerInhibition();
    }
    EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 1; }));
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 0; }));
    EXPECT_EQ(services_.countOf("Close()"), 1);
}

TEST_F(SleepInhibitorTest, AsksAnotherServiceWhenTheFirstHasGone) {
    offerScreenSaver();
    services_.offerInhibition();
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 1; }));
    services_.withdraw(portal);
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.Inhibit"));
    waitShortly();
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.UnInhibit(4711)"));
    EXPECT_EQ(services_.countOf("Close()"), 0);
}

TEST_F(SleepInhibitorTest, AsksAServiceThatAppearsLater) {
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitFor([&] { return !log_.empty(); }));
    offerScreenSaver();
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.Inhibit"));
}

TEST_F(SleepInhibitorTest, AfterTheEndOfACaptureARestartedServiceIsNotAsked) {
    services_.offerInhibition();
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 1; }));
    inhibitor_.setActive(false);
    EXPECT_TRUE(waitFor([&] { return services_.inhibitions() == 0; }));
    services_.withdraw(portal);
    services_.offerInhibition();
    // Longer than the delay of a new request.
    QTest::qWait(1500);
    EXPECT_EQ(services_.countOf("portal.Inhibit"), 1);
}

TEST_F(SleepInhibitorTest, ASystemBusThatHangsIsLeftOut) {
    const SilentSocket silent;
    const Environment bus("DBUS_SYSTEM_BUS_ADDRESS", silent.address().c_str());
    services_.offer("org.freedesktop.login1");
    offerScreenSaver();
    inhibitor_.setActive(true);
    EXPECT_TRUE(waitUntilCalled("ScreenSaver.Inhibit"));
    EXPECT_EQ(services_.countOf("login1"), 0);
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
