#include "platform/console/ConsoleThread.h"

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(ConsoleThread, RunsOnAThreadOfItsOwn) {
    std::promise<std::thread::id> where;
    ConsoleThread::withEntry([&] { where.set_value(std::this_thread::get_id()); })->start();
    EXPECT_NE(where.get_future().get(), std::this_thread::get_id());
}

TEST(ConsoleThread, ASecondStartDoesNothing) {
    std::atomic<int> runs{0};
    std::promise<void> released;
    const auto captured = std::shared_ptr<void>(nullptr, [&](void*) { released.set_value(); });
    auto thread = ConsoleThread::withEntry([&runs, held = captured] { ++runs; });
    thread->start();
    thread->start();
    while (captured.use_count() > 1) {
        std::this_thread::yield();
    }
    thread->start();
    EXPECT_EQ(runs, 1);
}

TEST(ConsoleThread, AnotherThreadMayCancelIt) {
    std::promise<void> ended;
    const auto thread = ConsoleThread::withEntry([&] {
        while (!ConsoleThread::current()->isCancelled()) {
            std::this_thread::yield();
        }
        ended.set_value();
    });
    thread->start();
    EXPECT_FALSE(thread->isCancelled());
    thread->cancel();
    ended.get_future().wait();
    EXPECT_TRUE(thread->isCancelled());
}

TEST(ConsoleThread, AThreadThatCapturesItselfIsLetGoOf) {
    std::promise<void> released;
    {
        const auto captured = std::shared_ptr<void>(nullptr, [&](void*) { released.set_value(); });
        auto own = std::make_shared<std::shared_ptr<NSThread>>();
        const auto thread = ConsoleThread::withEntry([captured, own] {});
        *own = thread;
        thread->start();
    }
    released.get_future().wait();
}

TEST(ConsoleThread, EveryThreadHasOneObject) {
    const std::shared_ptr<NSThread> own = ConsoleThread::current();
    ASSERT_TRUE(own);
    EXPECT_EQ(ConsoleThread::current(), own);
    std::thread([&] { EXPECT_NE(ConsoleThread::current(), own); }).join();
}

[[noreturn]] void exitWhileAThreadRuns() {
    std::promise<void> started;
    ConsoleThread::withEntry([&started] {
        started.set_value();
        for (;;) {
            if (ConsoleThread::current()->isCancelled()) {
                return;
            }
        }
    })->start();
    started.get_future().wait();
    std::exit(0);
}

TEST(ConsoleThreadDeathTest, TheProcessEndsWhileAThreadRuns) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWhileAThreadRuns(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace vistrane
