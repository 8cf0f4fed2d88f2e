#include "backends/posix/BackgroundWriter.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "backends/posix/Descriptor.h"
#include "backends/posix/threads.h"

namespace vistrane {

/// Shared by the writer and its thread.
struct BackgroundWriter::Shared {
    const int descriptor;
    const std::function<void(int)> failed;
    const std::size_t limit;
    std::mutex mutex;
    std::condition_variable changed;
    std::string waiting;
    bool isWriting = false;
    bool hasThread = false;
    int error = 0;

    bool isDone() const { return error != 0 || (waiting.empty() && !isWriting); }

    void run() {
        std::unique_lock lock(mutex);
        while (error == 0) {
            changed.wait(lock, [this] { return !waiting.empty(); });
            writePending(lock);
        }
    }

    void writePending(std::unique_lock<std::mutex>& lock) {
        const std::string text = std::exchange(waiting, {});
        isWriting = true;
        lock.unlock();
        const int result = writeAll(descriptor, text.data(), text.size());
        if (result != 0) {
            failed(result);
        }
        lock.lock();
        isWriting = false;
        error = result;
        changed.notify_all();
    }
};

BackgroundWriter::BackgroundWriter(int descriptor, std::function<void(int error)> failed,
                                   std::size_t limit)
    : shared_(new Shared{descriptor, std::move(failed), limit, {}, {}, {}}) {}

void BackgroundWriter::write(const std::string& text) {
    std::unique_lock lock(shared_->mutex);
    if (shared_->error != 0 || shared_->waiting.size() > shared_->limit) {
        return;
    }
    shared_->waiting += text;
    if (!shared_->hasThread) {
        shared_->hasThread = startDetachedThread([shared = shared_] { shared->run(); });
    }
    if (shared_->hasThread) {
        shared_->changed.notify_all();
    } else {
        shared_->writePending(lock);
    }
}

bool BackgroundWriter::flush(std::chrono::milliseconds timeout) {
    std::unique_lock lock(shared_->mutex);
    return shared_->changed.wait_for(lock, timeout, [this] { return shared_->isDone(); }) &&
           shared_->error == 0;
}

bool BackgroundWriter::flush() {
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait(lock, [this] { return shared_->isDone(); });
    return shared_->error == 0;
}

int BackgroundWriter::failure() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->error;
}

} // namespace vistrane
