#include "backends/qt/system/SleepInhibitor.h"

#include <functional>

#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "backends/posix/clock.h"
#include "backends/qt/system/QtRunLoop.h"
#include "tests/backends/qt/system/FakeServices.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

constexpr char portalInhibit[] = "org.freedesktop.portal.Inhibit.Inhibit";
constexpr char loginInhibit[] = "org.freedesktop.login1.Manager.Inhibit";
constexpr char saverInhibit[] = "org.freedesktop.ScreenSaver.Inhibit";

class SleepInhibitorTest : public ::testing::Test {
protected:
    ~SleepInhibitorTest() override { services_.reset(); }

    bool runUntil(const std::function<bool()>& done) {
        for (int step = 0; step < 6000 && !done(); ++step) {
            loop_.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.01});
        }
        return done();
    }
    bool runUntilCalled(const std::string& call, int times = 1) {
        return runUntil([&] { return services_.countOf(call) >= times; });
    }
    void runShortly() { loop_.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.05}); }

    void offerPortal() {
        services_.offer("org.freedesktop.portal.Desktop");
        services_.answer(portalInhibit, {QVariant::fromValue(QDBusObjectPath("/request/1"))});
        services_.answer("org.freedesktop.portal.Request.Close", {});
    }
    void offerScreenSaver() {
        services_.offer("org.freedesktop.ScreenSaver");
        services_.answer(saverInhibit, {QVariant(4711U)});
        services_.answer("org.freedesktop.ScreenSaver.UnInhibit", {});
    }

    QtRunLoop loop_;
    FakeServices& services_ = FakeServices::shared();
    std::vector<std::string> log_;
    SleepInhibitor inhibitor_{[this](const std::string& line) { log_.push_back(line); }};
};

TEST_F(SleepInhibitorTest, AsksThePortalAndEndsItsRequest) {
    offerPortal();
    inhibitor_.setActive(true);
    inhibitor_.setActive(true);
    EXPECT_TRUE(runUntilCalled("portal.Inhibit"));
    runShortly();
    inhibitor_.setActive(false);
    EXPECT_TRUE(runUntilCalled("Close"));
    EXPECT_EQ(services_.countOf("portal.Inhibit"), 1);
    EXPECT_EQ(services_.countOf("/request/1 org.freedesktop.portal.Request.Close()"), 1);
    EXPECT_THAT(log_, ElementsAre());
}

TEST_F(SleepInhibitorTest, AsksTheLoginManagerNextAndLetsGoOfItsLock) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    services_.offer("org.freedesktop.login1");
    services_.answer(loginInhibit, {QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))});
    ::close(ends[1]);
    inhibitor_.setActive(true);
    EXPECT_TRUE(runUntilCalled("login1.Manager.Inhibit(sleep:idle, Vistrane"));
    runShortly();
    services_.answer(loginInhibit, {});
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), -1) << "the lock is held";
    inhibitor_.setActive(false);
    EXPECT_TRUE(runUntil([&] { return ::read(ends[0], &byte, 1) == 0; })) << "the lock is free";
    ::close(ends[0]);
}

TEST_F(SleepInhibitorTest, AsksTheScreenSaverLast) {
    offerScreenSaver();
    inhibitor_.setActive(true);
    EXPECT_TRUE(runUntilCalled("ScreenSaver.Inhibit"));
    runShortly();
    inhibitor_.setActive(false);
    EXPECT_TRUE(runUntilCalled("ScreenSaver.UnInhibit(4711)"));
}

TEST_F(SleepInhibitorTest, WhatIsGrantedTooLateIsGivenBack) {
    offerPortal();
    inhibitor_.setActive(true);
    inhibitor_.setActive(false);
    EXPECT_TRUE(runUntilCalled("Close"));
    EXPECT_FALSE(inhibitor_.isActive());
}

TEST_F(SleepInhibitorTest, CapturingThatStartsAgainAsksAgain) {
    offerPortal();
    for (int times = 1; times <= 2; ++times) {
        inhibitor_.setActive(true);
        EXPECT_TRUE(runUntilCalled("portal.Inhibit", times));
        runShortly();
        inhibitor_.setActive(false);
        EXPECT_TRUE(runUntilCalled("Close", times));
    }
}

TEST_F(SleepInhibitorTest, ThatNobodyAnswersIsToldOnce) {
    inhibitor_.setActive(true);
    EXPECT_TRUE(runUntil([&] { return !log_.empty(); }));
    inhibitor_.setActive(false);
    inhibitor_.setActive(true);
    runShortly();
    EXPECT_EQ(log_.size(), 1U);
}

} // namespace
} // namespace vistrane
