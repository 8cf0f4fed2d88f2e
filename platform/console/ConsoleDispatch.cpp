#include "platform/console/ConsoleDispatch.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/console/threads.h"

namespace vistrane {

class ConsoleDispatch::GlobalQueue final : public DispatchQueue {
public:
    /// The thread is there from the beginning: a shortage of threads later on stops nothing.
    GlobalQueue() { startThread(); }

    ~GlobalQueue() override {
        std::deque<std::function<void()>> dropped;
        const std::lock_guard lock(shared_->mutex);
        shared_->closed = true;
        dropped.swap(shared_->items);
        shared_->changed.notify_one();
    }

    void async(std::function<void()> work) override {
        const std::lock_guard lock(shared_->mutex);
        shared_->items.push_back(std::move(work));
        shared_->changed.notify_one();
        startThread();
    }

private:
    /// Tried again with the next item when the system grants no thread now.
    void startThread() {
        if (!shared_->started) {
            shared_->started = startDetachedThread([shared = shared_] { shared->runItems(); });
        }
    }

    /// Belongs to the queue and to its thread, whichever lasts longer.
    struct Shared {
        void runItems() {
            while (const std::optional<std::function<void()>> work = take()) {
                (*work)();
            }
        }

        /// Nothing once the queue is gone.
        std::optional<std::function<void()>> take() {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return closed || !items.empty(); });
            if (closed) {
                return std::nullopt;
            }
            std::optional<std::function<void()>> work = std::move(items.front());
            items.pop_front();
            return work;
        }

        std::mutex mutex;
        std::condition_variable changed;
        std::deque<std::function<void()>> items;
        bool started = false;
        bool closed = false;
    };

    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

ConsoleDispatch::ConsoleDispatch(ConsoleRunLoop& loop)
    : loop_(loop), globalQueue_(std::make_unique<GlobalQueue>()) {}

ConsoleDispatch::~ConsoleDispatch() = default;

DispatchQueue& ConsoleDispatch::dispatch_get_global_queue(std::intptr_t, std::uintptr_t) {
    return *globalQueue_;
}

} // namespace vistrane
