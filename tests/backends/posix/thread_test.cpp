#include "backends/posix/PosixThread.h"

#include <atomic>
#include <cstdlib>
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "backends/posix/threads.h"

namespace vistrane {
namespace {

TEST(PosixThread, RunsOnAThreadOfItsOwn) {
    std::promise<std::thread::id> where;
    std::make_shared<PosixThread>([&] { where.set_value(std::this_thread::get_id()); })->start();
    EXPECT_NE(where.get_future().get(), std::this_thread::get_id());
}

TEST(PosixThread, ASecondStartDoesNothing) {
    std::atomic<int> runs{0};
    std::promise<void> released;
    const auto captured = std::shared_ptr<void>(nullptr, [&](void*) { released.set_value(); });
    auto thread = std::make_shared<PosixThread>([&runs, held = captured] { ++runs; });
    thread->start();
    thread->start();
    while (captured.use_count() > 1) {
        std::this_thread::yield();
    }
    thread->start();
    EXPECT_EQ(runs, 1);
}

TEST(PosixThread, AnotherThreadMayCancelIt) {
    std::promise<void> ended;
    const auto thread = std::make_shared<PosixThread>([&] {
        while (!PosixThread::current()->isCancelled()) {
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

TEST(PosixThread, AThreadThatCapturesItselfIsDestroyed) {
    std::promise<void> released;
    {
        const auto captured = std::shared_ptr<void>(nullptr, [&](void*) { released.set_value(); });
        auto own = std::make_shared<std::shared_ptr<NSThread>>();
        const auto thread = std::make_shared<PosixThread>([captured, own] {});
        *own = thread;
        thread->start();
    }
    released.get_future().wait();
}

TEST(PosixThread, EveryThreadHasOneObject) {
    const std::shared_ptr<NSThread> own = PosixThread::current();
    ASSERT_TRUE(own);
    EXPECT_EQ(PosixThread::current(), own);
    std::thread([&] { EXPECT_NE(PosixThread::current(), own); }).join();
}

[[noreturn]] void exitWhileAThreadRuns() {
    std::promise<void> started;
    std::make_shared<PosixThread>([&started] {
        started.set_value();
        for (;;) {
            if (PosixThread::current()->isCancelled()) {
                return;
            }
        }
    })->start();
    started.get_future().wait();
    std::exit(0);
}

#ifdef __linux__
TEST(LowPriority, HoldsForTheThreadThatSetsItAndForThoseThatItStarts) {
    const auto niceness = [] { return ::getpriority(PRIO_PROCESS, static_cast<id_t>(::gettid())); };
    const int before = niceness();
    int own = 0;
    int inherited = 0;
    std::thread([&] {
        lowerThreadPriority();
        own = niceness();
        std::thread([&] { inherited = niceness(); }).join();
    }).join();
    EXPECT_EQ(niceness(), before);
    EXPECT_EQ(inherited, own);
    // 19 is the limit.
    EXPECT_TRUE(own > before || before == 19);
}
#endif

TEST(PosixThreadDeathTest, TheProcessEndsWhileAThreadRuns) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWhileAThreadRuns(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace vistrane
