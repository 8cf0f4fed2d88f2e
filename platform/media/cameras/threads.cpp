#include "platform/media/cameras/threads.h"

#include <future>
#include <memory>
#include <system_error>
#include <utility>

#include <csignal>

namespace vistrane {

namespace {

/// A thread inherits the mask of the one that starts it.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

} // namespace

std::thread startThread(std::function<void()> work) {
    const SignalsBlocked blocked;
    try {
        return std::thread(std::move(work));
    } catch (const std::system_error&) {
        return {};
    }
}

bool startDetached(std::function<void()> work) {
    std::thread thread = startThread(std::move(work));
    if (!thread.joinable()) {
        return false;
    }
    thread.detach();
    return true;
}

bool runWithin(std::chrono::milliseconds patience, std::function<void()> work) {
    auto ended = std::make_shared<std::promise<void>>();
    auto future = ended->get_future();
    const auto run = [ended, shared = std::make_shared<std::function<void()>>(std::move(work))] {
        (*shared)();
        // What the work owns goes before anybody hears of its end.
        *shared = nullptr;
        ended->set_value();
    };
    if (!startDetached(run)) {
        run();
    }
    return future.wait_for(patience) == std::future_status::ready;
}

} // namespace vistrane
