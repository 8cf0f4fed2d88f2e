#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/foundation/NSThread.h"

namespace vistrane {

/// A thread of the program: run when the test says so, or a real one.
class SimThread final : public NSThread,
                        public SimObject,
                        public std::enable_shared_from_this<SimThread> {
public:
    SimThread(CallLog& log, std::string name, std::function<void()> entry,
              std::function<void(SimThread&)> launch);
    ~SimThread() override;

    void start() override;
    void cancel() override;
    bool isCancelled() const override;

    bool isStarted() const { return started_.load(); }
    bool isFinished() const { return finished_.load(); }

    /// Runs the entry on the calling thread, which stands for this one meanwhile.
    void run();
    /// Runs it as a thread of the system.
    void runForReal();
    /// Waits for the end of a real thread.
    void join();
    void cancelQuietly() { cancelled_.store(true); }

private:
    std::function<void()> entry_;
    std::function<void(SimThread&)> launch_;
    std::atomic<bool> started_{false};
    std::atomic<bool> finished_{false};
    std::atomic<bool> cancelled_{false};
    std::thread thread_;
};

/// The threads that the program made.
class SimThreads {
public:
    explicit SimThreads(CallLog& log);
    ~SimThreads() { end(); }
    SimThreads(const SimThreads&) = delete;
    SimThreads& operator=(const SimThreads&) = delete;

    /// What starting a thread does, for threads made from now on; at first nothing.
    void onStart(std::function<void(SimThread&)> launch) { launch_ = std::move(launch); }
    /// Threads made from now on run as soon as they are started, as threads of the system.
    void useRealThreads();
    bool areReal() const { return real_; }

    std::shared_ptr<NSThread> make(std::function<void()> entry);
    /// The running one; on the main thread an object that stands for that.
    std::shared_ptr<NSThread> current() const;

    /// Runs the entry of the thread of that number, counted from 1; it must have been started.
    void run(std::size_t number);
    std::shared_ptr<SimThread> thread(std::size_t number) const;
    std::size_t count() const;
    /// Cancels and joins what still runs.
    void end();
    /// Whether every started thread has come to its end.
    bool allFinished() const;

private:
    CallLog& log_;
    std::function<void(SimThread&)> launch_;
    bool real_ = false;
    mutable std::mutex mutex_;
    std::shared_ptr<SimThread> mainThread_;
    std::vector<std::shared_ptr<SimThread>> threads_;
};

} // namespace vistrane
