#include "backends/posix/BackgroundWriter.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
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
    /// What is left of the text that is being written, in bytes.
    std::size_t beingWritten = 0;
    std::size_t droppedLines = 0;
    bool hasThread = false;
    int error = 0;

    std::size_t pending() const { return waiting.size() + beingWritten; }

    void run() {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return !waiting.empty(); });
            writePending(lock);
        }
    }

    /// Leaves the newer half.
    void dropOldest() {
        const std::size_t half = waiting.size() - limit / 2;
        const std::size_t end = std::min(waiting.find('\n', half), waiting.size() - 1) + 1;
        const auto begin = waiting.begin();
        droppedLines += static_cast<std::size_t>(
            std::count(begin, begin + static_cast<std::ptrdiff_t>(end), '\n'));
        waiting.erase(0, end);
    }

    std::string take() {
        std::string text = std::exchange(waiting, {});
        if (const std::size_t lines = std::exchange(droppedLines, 0)) {
            text.insert(0, "vistrane: " + std::to_string(lines) +
                               " lines are left out here, because the lines before them were not "
                               "read in time.\n");
        }
        return text;
    }

    void writePending(std::unique_lock<std::mutex>& lock) {
        const std::string text = take();
        // In pieces, so that a slow reader is seen to read.
        constexpr std::size_t piece = 4096;
        int result = 0;
        for (std::size_t at = 0; at < text.size() && result == 0; at += piece) {
            beingWritten = text.size() - at;
            lock.unlock();
            result = writeAll(descriptor, text.data() + at, std::min(piece, text.size() - at));
            lock.lock();
        }
        if (result != 0) {
            lock.unlock();
            failed(result);
            lock.lock();
            error = error == 0 ? result : error;
        }
        beingWritten = 0;
        changed.notify_all();
    }
};

BackgroundWriter::BackgroundWriter(int descriptor, std::function<void(int error)> failed,
                                   std::size_t limit)
    : shared_(new Shared{descriptor, std::move(failed), limit, {}, {}, {}}) {}

void BackgroundWriter::write(const std::string& text) {
    std::unique_lock lock(shared_->mutex);
    if (shared_->waiting.size() > shared_->limit) {
        shared_->dropOldest();
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
    return shared_->changed.wait_for(lock, timeout, [this] { return shared_->pending() == 0; }) &&
           shared_->error == 0;
}

bool BackgroundWriter::flush() {
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait(lock, [this] { return shared_->pending() == 0; });
    return shared_->error == 0;
}

bool BackgroundWriter::flushWhileRead(std::chrono::milliseconds pause) {
    std::size_t before = std::numeric_limits<std::size_t>::max();
    std::unique_lock lock(shared_->mutex);
    while (shared_->pending() > 0 && shared_->pending() < before) {
        before = shared_->pending();
        shared_->changed.wait_for(lock, pause, [this] { return shared_->pending() == 0; });
    }
    return shared_->pending() == 0 && shared_->error == 0;
}

int BackgroundWriter::failure() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->error;
}

} // namespace vistrane
