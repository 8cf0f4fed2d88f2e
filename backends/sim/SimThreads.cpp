#include "backends/sim/SimThreads.h"

#include <utility>

#include "backends/sim/SimRole.h"

namespace vistrane {

SimThread::SimThread(CallLog& log, std::string name, std::function<void()> entry,
                     std::function<void(SimThread&)> launch)
    : SimObject(log, std::move(name)), entry_(std::move(entry)), launch_(std::move(launch)) {}

SimThread::~SimThread() {
    join();
}

void SimThread::start() {
    call("start");
    if (started_.exchange(true)) {
        log_.misuse(name() + " start: started twice");
        return;
    }
    if (launch_) {
        launch_(*this);
    }
}

void SimThread::cancel() {
    call("cancel");
    cancelQuietly();
}

bool SimThread::isCancelled() const {
    call("isCancelled");
    return cancelled_.load();
}

void SimThread::run() {
    {
        const ScopedSimRole role = ScopedSimRole::thread(shared_from_this());
        entry_();
    }
    finished_.store(true);
}

void SimThread::runForReal() {
    thread_ = std::thread([this] { run(); });
}

void SimThread::join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

SimThreads::SimThreads(CallLog& log)
    : log_(log), mainThread_(std::make_shared<SimThread>(
                     log, "mainThread", [] {}, nullptr)) {}

void SimThreads::useRealThreads() {
    real_ = true;
    onStart([](SimThread& thread) { thread.runForReal(); });
}

void SimThreads::end() {
    for (const std::shared_ptr<SimThread>& thread : threads_) {
        thread->cancelQuietly();
        thread->join();
    }
}

std::shared_ptr<NSThread> SimThreads::make(std::function<void()> entry) {
    auto thread =
        std::make_shared<SimThread>(log_, log_.nextName("thread"), std::move(entry), launch_);
    log_.record("threadWithEntry -> " + thread->name());
    const std::lock_guard lock(mutex_);
    threads_.push_back(thread);
    return thread;
}

std::shared_ptr<NSThread> SimThreads::current() const {
    std::shared_ptr<SimThread> thread = SimRole::thread();
    return thread ? thread : mainThread_;
}

void SimThreads::run(std::size_t number) {
    const std::shared_ptr<SimThread> wanted = thread(number);
    if (!wanted || !wanted->isStarted() || wanted->isFinished() || real_) {
        log_.misuse("run: thread" + std::to_string(number) + " has nothing to run");
        return;
    }
    wanted->run();
}

std::shared_ptr<SimThread> SimThreads::thread(std::size_t number) const {
    const std::lock_guard lock(mutex_);
    return number >= 1 && number <= threads_.size() ? threads_[number - 1] : nullptr;
}

std::size_t SimThreads::count() const {
    const std::lock_guard lock(mutex_);
    return threads_.size();
}

bool SimThreads::allFinished() const {
    const std::lock_guard lock(mutex_);
    for (const std::shared_ptr<SimThread>& thread : threads_) {
        if (thread->isStarted() && !thread->isFinished()) {
            return false;
        }
    }
    return true;
}

} // namespace vistrane
