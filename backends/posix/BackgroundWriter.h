#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace vistrane {

/// Writes text to a descriptor on its own thread, in the order of the calls, so that a slow reader
/// never blocks the program. Any thread.
class BackgroundWriter {
public:
    /// The caller keeps ownership of `descriptor`. `failed` is called once, on the writer's thread,
    /// with the first error number; later texts are discarded. A text is also discarded while more
    /// than `limit` bytes are pending.
    BackgroundWriter(int descriptor, std::function<void(int error)> failed,
                     std::size_t limit = std::numeric_limits<std::size_t>::max());

    void write(const std::string& text);

    /// Waits until everything is written. Returns false after an error or the timeout.
    bool flush(std::chrono::milliseconds timeout);
    /// The same without a timeout.
    bool flush();

    /// The first error number, or 0.
    int failure() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace vistrane
