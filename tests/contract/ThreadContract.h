#pragma once

#include <atomic>
#include <memory>

#include "platform/foundation/NSThread.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Threads. A backend has
///
///     Foundation& foundation();
template <typename Backend>
class ThreadContract : public ::testing::Test {
protected:
    /// Starts a thread and runs the main loop until the thread has ended its entry.
    void runToItsEnd(std::function<void()> entry) {
        const auto ended = std::make_shared<std::atomic<bool>>(false);
        thread_ = foundation().threadWithEntry([entry = std::move(entry), ended] {
            entry();
            *ended = true;
        });
        thread_->start();
        ASSERT_TRUE(contract::runUntil(foundation(), [&] { return ended->load(); }));
    }
    Foundation& foundation() { return backend_.foundation(); }

    Backend backend_;
    std::shared_ptr<NSThread> thread_;
};

TYPED_TEST_SUITE_P(ThreadContract);

TYPED_TEST_P(ThreadContract, AThreadDoesNothingBeforeItIsStarted) {
    std::atomic<bool> ran{false};
    const auto thread = this->foundation().threadWithEntry([&] { ran = true; });
    contract::runFor(this->foundation(), 0.01);
    EXPECT_FALSE(ran);
    EXPECT_FALSE(thread->isCancelled());
}

TYPED_TEST_P(ThreadContract, TheEntryRunsOnceAndTheCurrentThreadIsItsOwn) {
    std::atomic<int> runs{0};
    std::shared_ptr<NSThread> current;
    this->runToItsEnd([&] {
        ++runs;
        current = this->foundation().currentThread();
    });
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(current, this->thread_);
}

TYPED_TEST_P(ThreadContract, AThreadThatCancelsItselfReadsSo) {
    int passes = 0;
    this->runToItsEnd([&] {
        const std::shared_ptr<NSThread> own = this->foundation().currentThread();
        while (!own->isCancelled()) {
            if (++passes == 3) {
                own->cancel();
            }
        }
    });
    EXPECT_EQ(passes, 3);
    EXPECT_TRUE(this->thread_->isCancelled());
}

TYPED_TEST_P(ThreadContract, CancelOnlySetsTheFlag) {
    std::atomic<bool> ran{false};
    std::atomic<bool> cancelled{false};
    const auto thread = this->foundation().threadWithEntry([&] {
        cancelled = this->foundation().currentThread()->isCancelled();
        ran = true;
    });
    thread->cancel();
    EXPECT_TRUE(thread->isCancelled());
    thread->start();
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ran.load(); }));
    EXPECT_TRUE(cancelled);
}

TYPED_TEST_P(ThreadContract, ARunningThreadKeepsItself) {
    const auto captured = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<NSThread> thread =
        this->foundation().threadWithEntry([captured] { ++*captured; });
    thread->start();
    thread.reset();
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return captured->load() == 1; }));
}

REGISTER_TYPED_TEST_SUITE_P(ThreadContract, AThreadDoesNothingBeforeItIsStarted,
                            TheEntryRunsOnceAndTheCurrentThreadIsItsOwn,
                            AThreadThatCancelsItselfReadsSo, CancelOnlySetsTheFlag,
                            ARunningThreadKeepsItself);

} // namespace vistrane
