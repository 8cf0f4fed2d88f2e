#include "platform/media/cameras/threads.h"

#include <future>
#include <memory>
#include <utility>

#include <csignal>

namespace vistrane {

std::thread startThread(std::function<void()> work) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    // A thread inherits the mask of the one that starts it.
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread thread(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

bool runWithin(std::chrono::milliseconds patience, std::function<void()> work) {
    auto ended = std::make_shared<std::promise<void>>();
    auto future = ended->get_future();
    startThread([ended, work = std::move(work)]() mutable {
        work();
        // What the work owns goes before anybody hears of its end.
        work = nullptr;
        ended->set_value();
    }).detach();
    return future.wait_for(patience) == std::future_status::ready;
}

} // namespace vistrane
