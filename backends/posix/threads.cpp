#include "backends/posix/threads.h"

#include <csignal>
#include <future>
#include <memory>
#include <system_error>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace vistrane {

namespace {

/// Blocks all signals while it exists. A thread inherits the mask of the thread that starts it.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

} // namespace

std::thread startThread(std::function<void()> entry) {
    const SignalsBlocked blocked;
    try {
        return std::thread(std::move(entry));
    } catch (const std::system_error&) {
        return {};
    }
}

bool startDetachedThread(std::function<void()> entry) {
    std::thread thread = startThread(std::move(entry));
    if (!thread.joinable()) {
        return false;
    }
    thread.detach();
    return true;
}

bool runWithin(std::chrono::milliseconds timeout, std::function<void()> work) {
    auto ended = std::make_shared<std::promise<void>>();
    auto future = ended->get_future();
    const auto run = [ended, shared = std::make_shared<std::function<void()>>(std::move(work))] {
        (*shared)();
        // The work's captures are destroyed before its end is reported.
        *shared = nullptr;
        ended->set_value();
    };
    if (!startDetachedThread(run)) {
        run();
    }
    return future.wait_for(timeout) == std::future_status::ready;
}

void lowerThreadPriority() {
#ifdef __linux__
    constexpr int nicer = 10;
    // On Linux each thread has its own priority. Failure to change it is not an error.
    const auto thread = static_cast<id_t>(::gettid());
    ::setpriority(PRIO_PROCESS, thread, ::getpriority(PRIO_PROCESS, thread) + nicer);
#endif
}

} // namespace vistrane
