#include "backends/console/ConsoleAlert.h"

#include <future>
#include <thread>

#include <gmock/gmock.h>

namespace vistrane {
namespace {

class ConsoleAlertTest : public ::testing::Test {
protected:
    std::shared_ptr<const ConsoleAlertRules>
    rules(std::function<NSModalResponse(const ConsoleAlert&)> answer) {
        return std::make_shared<const ConsoleAlertRules>(ConsoleAlertRules{
            loop_, [this](const std::string& text) { shown_.push_back(text); }, std::move(answer)});
    }

    ConsoleRunLoop loop_;
    std::vector<std::string> shown_;
};

TEST_F(ConsoleAlertTest, ShowsItsTextsThenAsksForTheAnswer) {
    std::vector<std::string> titles;
    ConsoleAlert alert(rules([&](const ConsoleAlert& asked) {
        EXPECT_THAT(shown_, ::testing::ElementsAre("message\ninformation"));
        EXPECT_EQ(asked.messageText(), "message");
        EXPECT_EQ(asked.informativeText(), "information\n");
        EXPECT_TRUE(asked.isOnMainThread());
        titles = asked.buttonTitles();
        return NSAlertFirstButtonReturn + 1;
    }));
    alert.setMessageText("message");
    alert.setInformativeText("information\n");
    alert.addButtonWithTitle("Ok");
    alert.addButtonWithTitle("Cancel");
    alert.window().setTitlebarAppearsTransparent(true);
    EXPECT_EQ(alert.runModal(), 1001);
    EXPECT_THAT(titles, ::testing::ElementsAre("Ok", "Cancel"));
}

TEST_F(ConsoleAlertTest, WithoutButtonsThereIsOneThatConfirms) {
    std::size_t buttons = 0;
    ConsoleAlert alert(rules([&](const ConsoleAlert& asked) {
        buttons = asked.buttonTitles().size();
        return NSAlertFirstButtonReturn;
    }));
    EXPECT_EQ(alert.runModal(), NSAlertFirstButtonReturn);
    EXPECT_EQ(buttons, 1U);
}

TEST_F(ConsoleAlertTest, WithoutARuleTheDefaultButtonAnswers) {
    ConsoleAlert alert(rules({}));
    EXPECT_EQ(alert.runModal(), NSAlertFirstButtonReturn);
}

TEST_F(ConsoleAlertTest, TimersHoldBackWhileTheMainThreadWaits) {
    int ticks = 0;
    const auto timer = loop_.scheduleTimer(
        0.001, [&](NSTimer&) { ++ticks; }, true);
    ConsoleAlert alert(rules([&](const ConsoleAlert&) {
        // What has come due by itself ticks in the first pass, or not at all.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        loop_.runUntilDate({0.0});
        return NSAlertFirstButtonReturn;
    }));
    alert.runModal();
    EXPECT_EQ(ticks, 0);
    loop_.runUntilDate({0.0});
    EXPECT_EQ(ticks, 1);
}

TEST_F(ConsoleAlertTest, OnAnotherThreadTimersGoOn) {
    std::promise<void> ticked;
    std::promise<bool> onMainThread;
    const auto timer = loop_.scheduleTimer(
        0.001,
        [&](NSTimer& own) {
            own.invalidate();
            ticked.set_value();
            loop_.stop();
        },
        true);
    std::thread other([&] {
        ConsoleAlert alert(rules([&](const ConsoleAlert& asked) {
            onMainThread.set_value(asked.isOnMainThread());
            ticked.get_future().wait();
            return NSAlertFirstButtonReturn;
        }));
        alert.runModal();
    });
    EXPECT_FALSE(onMainThread.get_future().get());
    loop_.run();
    other.join();
}

TEST_F(ConsoleAlertTest, AnErrorsAlertIsComplete) {
    ConsoleAlert alert(rules({}), {"SomeDomain", -42, "The file cannot be written"});
    EXPECT_EQ(alert.messageText(), "The file cannot be written");
    EXPECT_THAT(alert.informativeText(), ::testing::HasSubstr("SomeDomain"));
    EXPECT_THAT(alert.informativeText(), ::testing::HasSubstr("-42"));
    EXPECT_THAT(alert.buttonTitles(), ::testing::ElementsAre("OK"));
}

} // namespace
} // namespace vistrane
