#include "platform/posix/threads.h"

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace vistrane {

namespace {

/// A thread inherits the mask of the thread that starts it.
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

bool startDetachedThread(std::function<void()> entry) {
    const SignalsBlocked blocked;
    try {
        std::thread(std::move(entry)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void giveWayToOtherThreads() {
#ifdef __linux__
    constexpr int nicer = 10;
    // Priorities are a thread's own here. One that is refused costs nothing but comfort.
    const auto thread = static_cast<id_t>(::gettid());
    ::setpriority(PRIO_PROCESS, thread, ::getpriority(PRIO_PROCESS, thread) + nicer);
#endif
}

} // namespace vistrane
