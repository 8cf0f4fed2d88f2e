#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/foundation/NSThread.h"

namespace vistrane {

class SimThread;

/// Which of the program's threads the running code stands for. The sim runs most of them on the
/// test's own thread, one after another. An object of this class sets the role for its scope.
class SimRole {
public:
    static SimRole main() { return SimRole(true, nullptr); }
    static SimRole globalQueue() { return SimRole(false, nullptr); }
    static SimRole thread(std::shared_ptr<SimThread> thread) {
        return SimRole(false, std::move(thread));
    }
    SimRole(const SimRole&) = delete;
    SimRole& operator=(const SimRole&) = delete;
    ~SimRole() { current_ = outer_; }

    /// A test's own code is the main thread's.
    static bool isMain() { return current_ == nullptr || current_->isMain_; }
    /// The thread object whose entry is running; null on the main thread and the global queue.
    static std::shared_ptr<SimThread> thread() { return current_ ? current_->thread_ : nullptr; }

private:
    SimRole(bool isMain, std::shared_ptr<SimThread> thread)
        : isMain_(isMain), thread_(std::move(thread)), outer_(std::exchange(current_, this)) {}

    static inline thread_local const SimRole* current_ = nullptr;

    bool isMain_;
    std::shared_ptr<SimThread> thread_;
    const SimRole* outer_;
};

/// A thread of the program: run when the test says so, or a real one.
class SimThread final : public SimOf<NSThread>, public std::enable_shared_from_this<SimThread> {
public:
    SimThread(CallLog& log, std::string name, std::function<void()> entry,
              std::function<void(SimThread&)> launch)
        : SimOf(log, std::move(name)), entry_(std::move(entry)), launch_(std::move(launch)) {}
    ~SimThread() override { join(); }

    void start() override {
        call("start");
        if (started_.exchange(true)) {
            log_.misuse(name() + " start: started twice");
        } else if (launch_) {
            launch_(*this);
        }
    }
    void cancel() override {
        call("cancel");
        cancelQuietly();
    }
    bool isCancelled() const override {
        call("isCancelled");
        return cancelled_.load();
    }

    bool isStarted() const { return started_.load(); }
    bool isFinished() const { return finished_.load(); }

    /// Runs the entry on the calling thread, which stands for this one meanwhile.
    void run() {
        {
            const SimRole role = SimRole::thread(shared_from_this());
            entry_();
        }
        finished_.store(true);
    }
    /// Runs the entry on a thread of the system.
    void runForReal() {
        thread_ = std::thread([this] { run(); });
    }
    /// Waits for the end of a real thread.
    void join() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    /// As `cancel`, not recorded.
    void cancelQuietly() { cancelled_.store(true); }

private:
    std::function<void()> entry_;
    std::function<void(SimThread&)> launch_;
    std::atomic<bool> started_{false};
    std::atomic<bool> finished_{false};
    std::atomic<bool> cancelled_{false};
    std::thread thread_;
};

/// The threads that the program made. Tests call it on the main thread.
class SimThreads {
public:
    explicit SimThreads(CallLog& log)
        : log_(log), mainThread_(std::make_shared<SimThread>(
                         log, "mainThread", [] {}, nullptr)) {}
    ~SimThreads() { end(); }
    SimThreads(const SimThreads&) = delete;
    SimThreads& operator=(const SimThreads&) = delete;

    /// What starting a thread does, for threads made from now on; at first nothing.
    void onStart(std::function<void(SimThread&)> launch) { launch_ = std::move(launch); }
    /// Threads made from now on are threads of the system, which run as soon as they are started.
    void useRealThreads() {
        real_ = true;
        onStart([](SimThread& thread) { thread.runForReal(); });
    }
    bool areReal() const { return real_; }

    std::shared_ptr<NSThread> make(std::function<void()> entry) {
        threads_.push_back(
            std::make_shared<SimThread>(log_, log_.nextName("thread"), std::move(entry), launch_));
        log_.record("threadWithEntry -> %", threads_.back());
        return threads_.back();
    }
    /// The running one; an object that stands for the main thread when there is none.
    std::shared_ptr<NSThread> current() const {
        std::shared_ptr<SimThread> thread = SimRole::thread();
        return thread ? thread : mainThread_;
    }

    /// Runs the entry of the thread of that number, counted from 1; it must have been started.
    void run(std::size_t number) {
        const std::shared_ptr<SimThread> wanted = thread(number);
        if (!wanted || !wanted->isStarted() || wanted->isFinished() || real_) {
            log_.misuse("run: thread" + std::to_string(number) + " has nothing to run");
            return;
        }
        wanted->run();
    }
    /// Null when there is none of that number.
    std::shared_ptr<SimThread> thread(std::size_t number) const {
        return number >= 1 && number <= threads_.size() ? threads_[number - 1] : nullptr;
    }
    std::size_t count() const { return threads_.size(); }
    /// Cancels and joins the threads that still run.
    void end() {
        for (const std::shared_ptr<SimThread>& thread : threads_) {
            thread->cancelQuietly();
            thread->join();
        }
    }
    /// Whether every started thread has ended.
    bool allFinished() const {
        return std::all_of(threads_.begin(), threads_.end(), [](const auto& thread) {
            return !thread->isStarted() || thread->isFinished();
        });
    }

private:
    CallLog& log_;
    std::function<void(SimThread&)> launch_;
    bool real_ = false;
    std::shared_ptr<SimThread> mainThread_;
    std::vector<std::shared_ptr<SimThread>> threads_;
};

} // namespace vistrane
