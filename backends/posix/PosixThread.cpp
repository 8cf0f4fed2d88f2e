#include "backends/posix/PosixThread.h"

#include <cerrno>
#include <utility>

#include "backends/posix/threads.h"

namespace vistrane {

namespace {

thread_local std::shared_ptr<NSThread> runningThread;

} // namespace

std::shared_ptr<PosixThread> PosixThread::withEntry(std::function<void()> entry,
                                                    std::function<void(const NSError&)> failed) {
    return std::shared_ptr<PosixThread>(new PosixThread(std::move(entry), std::move(failed)));
}

std::shared_ptr<NSThread> PosixThread::current() {
    if (!runningThread) {
        runningThread = withEntry({});
    }
    return runningThread;
}

PosixThread::PosixThread(std::function<void()> entry, std::function<void(const NSError&)> failed)
    : entry_(std::move(entry)), failed_(std::move(failed)) {}

void PosixThread::start() {
    if (started_.exchange(true)) {
        return;
    }
    if (!startDetachedThread([self = shared_from_this()] { self->run(); }) && failed_) {
        failed_({"NSPOSIXErrorDomain", EAGAIN,
                 "A thread could not be started because the system refuses more of them; end "
                 "other programs and try again"});
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
