#include "backends/posix/EndingSignals.h"

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include <csignal>

#include "backends/posix/threads.h"

namespace vistrane {

namespace {

/// How long the main thread may take to respond. It responds immediately unless a camera or a
/// reader of its output blocks it.
constexpr std::chrono::milliseconds timeout{400};

bool isIgnored(int signal) {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t endingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    // sigwait would receive the signal even though it is ignored.
    if (!isIgnored(SIGHUP)) {
        ::sigaddset(&signals, SIGHUP);
    }
    return signals;
}

/// The current handlers. Never destroyed, because the waiting thread runs as long as the process.
struct Current {
    std::mutex mutex;
    EndingSignals::Handlers handlers{{}, {}, [](int status) { std::_Exit(status); }};
};

Current& current() {
    static Current& only = *new Current;
    return only;
}

EndingSignals::Handlers currentHandlers() {
    const std::lock_guard lock(current().mutex);
    return current().handlers;
}

void waitForSignals() {
    const sigset_t signals = endingSignals();
    int signal = 0;
    EndingSignals::Handlers handlers;
    do {
        while (::sigwait(&signals, &signal) != 0) {
        }
        handlers = currentHandlers();
    } while (handlers.finish && handlers.finish(signal));
    if (handlers.ask) {
        handlers.ask(128 + signal);
        // A second signal does not shorten this: closing a session sends two at once.
        std::this_thread::sleep_for(timeout);
    }
    handlers.force(128 + signal);
}

} // namespace

void EndingSignals::block() {
    const sigset_t signals = endingSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // libcamera 0.0.3 handles it, and crashes if it arrives while a listing starts libcamera.
    sigset_t ofChildren;
    ::sigemptyset(&ofChildren);
    ::sigaddset(&ofChildren, SIGCHLD);
    ::pthread_sigmask(SIG_BLOCK, &ofChildren, nullptr);
    // If it was ignored when the program started, the status of a child would be lost.
    std::signal(SIGCHLD, SIG_DFL);
    // Writing to a closed pipe or beyond the file size limit then fails with an error number.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    if (!startDetachedThread(waitForSignals)) {
        // Without the thread the signals keep their default action.
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

void EndingSignals::handle(Handlers handlers) {
    const std::lock_guard lock(current().mutex);
    current().handlers = std::move(handlers);
}

} // namespace vistrane
