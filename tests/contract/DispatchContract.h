#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "platform/dispatch/Dispatch.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The two queues. A backend has
///
///     Foundation& foundation();
///     Dispatch& dispatch();
template <typename Backend>
class DispatchContract : public ::testing::Test {
protected:
    DispatchQueue& mainQueue() { return backend_.dispatch().dispatch_get_main_queue(); }
    DispatchQueue& globalQueue() {
        return backend_.dispatch().dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
    }
    bool runUntil(const std::function<bool()>& done) {
        return contract::runUntil(backend_.foundation(), done);
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(DispatchContract);

TYPED_TEST_P(DispatchContract, TheMainQueueWaitsForTheRunLoop) {
    bool worked = false;
    dispatch_async(this->mainQueue(), [&] { worked = true; });
    EXPECT_FALSE(worked);
    EXPECT_TRUE(this->runUntil([&] { return worked; }));
}

TYPED_TEST_P(DispatchContract, TheMainQueueRunsOnTheMainThread) {
    std::thread::id thread;
    dispatch_async(this->globalQueue(), [&] {
        dispatch_async(this->mainQueue(), [&] { thread = std::this_thread::get_id(); });
    });
    this->runUntil([&] { return thread != std::thread::id(); });
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TYPED_TEST_P(DispatchContract, AnItemMayAddItems) {
    int worked = 0;
    dispatch_async(this->mainQueue(), [&] {
        ++worked;
        dispatch_async(this->mainQueue(), [&] { ++worked; });
    });
    EXPECT_TRUE(this->runUntil([&] { return worked == 2; }));
}

TYPED_TEST_P(DispatchContract, OneGlobalItemEndsBeforeTheNextStarts) {
    std::atomic<int> running{0};
    std::atomic<int> most{0};
    std::atomic<int> ended{0};
    for (int number = 0; number < 50; ++number) {
        dispatch_async(this->globalQueue(), [&] {
            most = std::max(most.load(), ++running);
            std::this_thread::yield();
            --running;
            ++ended;
        });
    }
    ASSERT_TRUE(this->runUntil([&] { return ended == 50; }));
    EXPECT_EQ(most, 1);
}

TYPED_TEST_P(DispatchContract, TwoHopsKeepTheOrder) {
    std::vector<int> order;
    for (int number = 0; number < 200; ++number) {
        dispatch_async(this->globalQueue(), [this, &order, number] {
            dispatch_async(this->mainQueue(), [&order, number] { order.push_back(number); });
        });
    }
    ASSERT_TRUE(this->runUntil([&] { return order.size() == 200; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TYPED_TEST_P(DispatchContract, AnItemIsDestroyedAfterItHasRun) {
    const auto captured = std::make_shared<int>(0);
    bool worked = false;
    dispatch_async(this->mainQueue(), [captured, &worked] { worked = true; });
    this->runUntil([&] { return worked; });
    EXPECT_EQ(captured.use_count(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(DispatchContract, TheMainQueueWaitsForTheRunLoop,
                            TheMainQueueRunsOnTheMainThread, AnItemMayAddItems,
                            OneGlobalItemEndsBeforeTheNextStarts, TwoHopsKeepTheOrder,
                            AnItemIsDestroyedAfterItHasRun);

} // namespace vistrane
