#include "backends/posix/EndingSignals.h"

#include <cstdlib>
#include <mutex>
#include <utility>

#include <csignal>
#include <ctime>

#include "backends/posix/threads.h"

namespace vistrane {

namespace {

/// How long the main thread may take to answer, in seconds. It answers at once unless it is held
/// up by a camera or a reader of its output.
constexpr std::time_t patience = 1;

bool isIgnored(int signal) {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t endingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    // Who is started with hang-ups ignored is to outlive its terminal. Waiting for the signal
    // would take it nevertheless.
    if (!isIgnored(SIGHUP)) {
        ::sigaddset(&signals, SIGHUP);
    }
    return signals;
}

/// What is done about a signal. Lasts as long as the process, as the waiting thread does.
struct Current {
    std::mutex mutex;
    EndingSignals::Handlers handlers{{}, [](int status) { std::_Exit(status); }};
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
    while (::sigwait(&signals, &signal) != 0) {
    }
    const EndingSignals::Handlers handlers = currentHandlers();
    if (handlers.ask) {
        handlers.ask(128 + signal);
        // A second signal cuts the patience short.
        const std::timespec limit{patience, 0};
        ::sigtimedwait(&signals, nullptr, &limit);
    }
    handlers.force(128 + signal);
}

} // namespace

void EndingSignals::block() {
    const sigset_t signals = endingSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A closed pipe or a full file is an error of the call that writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    if (!startDetachedThread(waitForSignals)) {
        // Nobody waits for them: they end the process as they do any other.
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

void EndingSignals::handle(Handlers handlers) {
    const std::lock_guard lock(current().mutex);
    current().handlers = std::move(handlers);
}

} // namespace vistrane
