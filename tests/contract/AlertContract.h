#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include <ctime>
#include <gmock/gmock.h>

#include "platform/appkit/NSAlert.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSError.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Alerts. A backend has
///
///     Foundation& foundation();
///     Dispatch& dispatch();
///     std::unique_ptr<NSAlert> alert();
///     std::unique_ptr<NSAlert> alertWithError(const NSError&);
///     std::shared_ptr<NSView> view();                  of an interface file
///     void answerNextAlert(NSInteger button, double seconds);
///                                 the user presses that button, counted from 0, that long after
///                                 the next alert appears; called on the main thread
///     void confirmNextAlert(double seconds);     the same with the key for the default button
template <typename Backend>
class AlertContract : public ::testing::Test {
protected:
    Foundation& foundation() { return backend_.foundation(); }

    std::unique_ptr<NSAlert> alertWithButtons(std::initializer_list<const char*> titles) {
        std::unique_ptr<NSAlert> alert = backend_.alert();
        alert->setMessageText("Message");
        alert->setInformativeText("Information.\n");
        for (const char* title : titles) {
            alert->addButtonWithTitle(title);
        }
        return alert;
    }

    /// Runs an alert on another thread, and the main loop until that thread has ended.
    void runOnAnotherThread(const std::function<void(NSAlert&)>& run) {
        std::atomic<bool> ended{false};
        const auto thread = foundation().threadWithEntry([&] {
            run(*alertWithButtons({"Got it"}));
            ended = true;
        });
        thread->start();
        ASSERT_TRUE(contract::runUntil(foundation(), [&] { return ended.load(); }));
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(AlertContract);

TYPED_TEST_P(AlertContract, ButtonsAnswerInTheOrderInWhichTheyWereAdded) {
    for (NSInteger button = 0; button < 3; ++button) {
        const auto alert = this->alertWithButtons({"one", "two", "three"});
        this->backend_.answerNextAlert(button, 0.0);
        EXPECT_EQ(alert->runModal(), NSAlertFirstButtonReturn + button);
    }
}

TYPED_TEST_P(AlertContract, TheDefaultButtonIsTheFirstOrTheOneThatNeedsNoTitle) {
    for (const bool isPressed : {true, false}) {
        const std::unique_ptr<NSAlert> alerts[] = {
            this->alertWithButtons({"Ok", "Cancel"}), this->alertWithButtons({}),
            this->backend_.alertWithError({"SomeDomain", -42, "It did not work."})};
        for (const auto& alert : alerts) {
            if (isPressed) {
                this->backend_.answerNextAlert(0, 0.0);
            } else {
                this->backend_.confirmNextAlert(0.0);
            }
            EXPECT_EQ(alert->runModal(), NSAlertFirstButtonReturn);
        }
    }
}

TYPED_TEST_P(AlertContract, AnyTextIsAccepted) {
    for (const std::string text : {"", "two\nlines\n", "<b>&File</b>", "/tmp/\xff\xfe\x1b"}) {
        const auto alert = this->alertWithButtons({"Got it"});
        alert->setMessageText(text);
        alert->setInformativeText(text);
        alert->window().setTitlebarAppearsTransparent(true);
        this->backend_.confirmNextAlert(0.0);
        EXPECT_EQ(alert->runModal(), NSAlertFirstButtonReturn);
    }
}

TYPED_TEST_P(AlertContract, AnAccessoryViewCanBeUsedAgain) {
    const std::shared_ptr<NSView> view = this->backend_.view();
    for (int times = 0; times < 2; ++times) {
        auto alert = this->alertWithButtons({"Got it"});
        alert->setAccessoryView(view);
        this->backend_.confirmNextAlert(0.0);
        EXPECT_EQ(alert->runModal(), NSAlertFirstButtonReturn);
    }
}

TYPED_TEST_P(AlertContract, OnTheMainThreadTimersWaitAndTickOnceAfterwards) {
    constexpr double interval = 0.01;
    int ticks = 0;
    const auto timer = this->foundation().scheduledTimerWithTimeInterval(
        interval, [&](NSTimer&) { ++ticks; }, true);
    const auto alert = this->alertWithButtons({"Got it"});
    this->backend_.confirmNextAlert(20 * interval);
    alert->runModal();
    EXPECT_EQ(ticks, 0);
    const double answered = this->foundation().date().timeIntervalSince1970;
    contract::runOnePass(this->foundation());
    EXPECT_GE(ticks, 1);
    // On a real clock more dates may have passed since the answer.
    const double since = this->foundation().date().timeIntervalSince1970 - answered;
    EXPECT_LE(ticks, 2 + since / interval);
    timer->invalidate();
}

TYPED_TEST_P(AlertContract, AnAlertInATickStopsItsOwnTimerMeanwhile) {
    int ticks = 0;
    int ticksWhileUp = 0;
    const auto timer = this->foundation().scheduledTimerWithTimeInterval(
        0.01,
        [&](NSTimer& own) {
            if (++ticks == 1) {
                const auto alert = this->alertWithButtons({"Got it"});
                this->backend_.confirmNextAlert(0.1);
                alert->runModal();
                ticksWhileUp = ticks - 1;
            } else {
                own.invalidate();
            }
        },
        true);
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ticks == 2; }));
    EXPECT_EQ(ticksWhileUp, 0);
}

TYPED_TEST_P(AlertContract, OnTheMainThreadTheMainQueueKeepsRunning) {
    bool worked = false;
    dispatch_async(this->backend_.dispatch().dispatch_get_main_queue(), [&] { worked = true; });
    const auto alert = this->alertWithButtons({"Got it"});
    this->backend_.confirmNextAlert(0.05);
    alert->runModal();
    EXPECT_TRUE(worked);
}

TYPED_TEST_P(AlertContract, OnAnotherThreadTheAnswerIsReturned) {
    std::atomic<NSModalResponse> answer{0};
    this->backend_.answerNextAlert(0, 0.0);
    this->runOnAnotherThread([&](NSAlert& alert) { answer = alert.runModal(); });
    EXPECT_EQ(answer, NSAlertFirstButtonReturn);
}

TYPED_TEST_P(AlertContract, OnAnotherThreadTheMainLoopKeepsRunning) {
    std::atomic<int> ticks{0};
    std::atomic<int> ticksWhileUp{0};
    const auto timer = this->foundation().scheduledTimerWithTimeInterval(
        0.002, [&](NSTimer&) { ++ticks; }, true);
    // On a busy machine the main thread may not get the processor, but not every time.
    for (int times = 0; times < 50 && ticksWhileUp < 3; ++times) {
        this->backend_.confirmNextAlert(0.1);
        this->runOnAnotherThread([&](NSAlert& alert) {
            const int before = ticks;
            alert.runModal();
            ticksWhileUp = ticks - before;
        });
    }
    EXPECT_GE(ticksWhileUp, 3);
    timer->invalidate();
}

TYPED_TEST_P(AlertContract, OnAnotherThreadWaitingUsesNoProcessorTime) {
    constexpr double seconds = 0.5;
    const auto processorTime = [] {
        std::timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    std::atomic<double> used{seconds};
    this->backend_.confirmNextAlert(seconds);
    this->runOnAnotherThread([&](NSAlert& alert) {
        const double before = processorTime();
        alert.runModal();
        used = processorTime() - before;
    });
    EXPECT_LT(used, seconds / 4);
}

REGISTER_TYPED_TEST_SUITE_P(AlertContract, ButtonsAnswerInTheOrderInWhichTheyWereAdded,
                            TheDefaultButtonIsTheFirstOrTheOneThatNeedsNoTitle, AnyTextIsAccepted,
                            AnAccessoryViewCanBeUsedAgain,
                            OnTheMainThreadTimersWaitAndTickOnceAfterwards,
                            AnAlertInATickStopsItsOwnTimerMeanwhile,
                            OnTheMainThreadTheMainQueueKeepsRunning,
                            OnAnotherThreadTheAnswerIsReturned,
                            OnAnotherThreadTheMainLoopKeepsRunning,
                            OnAnotherThreadWaitingUsesNoProcessorTime);

} // namespace vistrane
