#include "backends/posix/PosixThread.h"

#include <utility>

#include "backends/posix/threads.h"

namespace vistrane {

namespace {

thread_local std::shared_ptr<NSThread> runningThread;

} // namespace

std::shared_ptr<NSThread> PosixThread::current() {
    if (!runningThread) {
        runningThread = std::make_shared<PosixThread>(nullptr);
    }
    return runningThread;
}

PosixThread::PosixThread(std::function<void()> entry, std::function<void()> failed)
    : entry_(std::move(entry)), failed_(std::move(failed)) {}

void PosixThread::start() {
    if (started_.exchange(true)) {
        return;
    }
    if (!startDetachedThread([self = shared_from_this()] { self->run(); }) && failed_) {
        failed_();
    }
}

void PosixThread::run() {
    runningThread = shared_from_this();
    {
        const std::function<void()> entry = std::exchange(entry_, {});
        if (entry) {
            entry();
        }
    }
    runningThread.reset();
}

} // namespace vistrane
