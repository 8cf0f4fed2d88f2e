#include "backends/qt/loop/QtDispatch.h"

#include <atomic>
#include <csignal>
#include <future>
#include <thread>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

DispatchQueue& globalQueue(QtDispatch& dispatch) {
    return dispatch.dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
}

TEST(QtDispatch, TheGlobalQueuesThreadBlocksSignals) {
    QtRunLoop loop;
    QtDispatch dispatch(loop);
    std::promise<bool> blocked;
    globalQueue(dispatch).async([&] {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        blocked.set_value(sigismember(&mask, SIGINT) == 1 && sigismember(&mask, SIGTERM) == 1);
    });
    EXPECT_TRUE(blocked.get_future().get());
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGINT), 0);
}

TEST(QtDispatch, DestroyingDiscardsWaitingItemsAndDoesNotJoin) {
    // Shared: the item may outlive the test.
    const auto release = std::make_shared<std::promise<void>>();
    const auto ran = std::make_shared<std::atomic<bool>>(false);
    std::promise<void> started;
    {
        QtRunLoop loop;
        QtDispatch dispatch(loop);
        globalQueue(dispatch).async([&started, release] {
            started.set_value();
            release->get_future().wait();
        });
        globalQueue(dispatch).async([ran] { *ran = true; });
        started.get_future().wait();
    }
    EXPECT_EQ(ran.use_count(), 1);
    EXPECT_FALSE(*ran);
    release->set_value();
}

/// Ends a process while an item runs that posts without end, as a compile does.
[[noreturn]] void exitWhileWorkGoesOn() {
    auto* loop = new QtRunLoop;
    auto* dispatch = new QtDispatch(*loop);
    std::promise<void> started;
    globalQueue(*dispatch).async([&started, dispatch] {
        started.set_value();
        for (;;) {
            dispatch->dispatch_get_main_queue().async([] {});
            std::this_thread::yield();
        }
    });
    started.get_future().wait();
    std::exit(0);
}

TEST(QtDispatchDeathTest, TheProcessEndsWhileWorkGoesOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWhileWorkGoesOn(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace vistrane
