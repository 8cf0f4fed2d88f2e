#include "backends/qt/system/message_bus.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/Environment.h"
#include "tests/support/SilentSocket.h"

namespace vistrane {
namespace {

constexpr char sessionAddress[] = "DBUS_SESSION_BUS_ADDRESS";
constexpr std::chrono::milliseconds shortly{50};
constexpr std::chrono::milliseconds atLast{60000};

TEST(MessageBus, ABusThatAnswersDoesNotHang) {
    EXPECT_FALSE(hangs(MessageBus::session, atLast));
    EXPECT_FALSE(hangs(MessageBus::system, atLast));
}

TEST(MessageBus, ABusThatTakesConnectionsAndNeverAnswersHangs) {
    const SilentSocket silent;
    const Environment session(sessionAddress, silent.address().c_str());
    const Environment system("DBUS_SYSTEM_BUS_ADDRESS",
                             (silent.address() + ",guid=0123;unix:path=/other").c_str());
    EXPECT_TRUE(hangs(MessageBus::session, shortly));
    EXPECT_TRUE(hangs(MessageBus::system, shortly));
    EXPECT_TRUE(leaveHangingSessionBus());
    EXPECT_EQ(std::string(std::getenv(sessionAddress)), "disabled:");
    EXPECT_FALSE(hangs(MessageBus::session, atLast));
}

TEST(MessageBus, ABusThatIsNotThereDoesNotHang) {
    for (const char* const address : {"unix:path=/no such folder/bus", "disabled:", "unix:path=",
                                      "unix:abstract=nobody listens here", "autolaunch:", ";"}) {
        const Environment session(sessionAddress, address);
        EXPECT_FALSE(hangs(MessageBus::session, atLast)) << address;
        EXPECT_FALSE(leaveHangingSessionBus()) << address;
        EXPECT_EQ(std::string(std::getenv(sessionAddress)), address);
    }
}

} // namespace
} // namespace vistrane
