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
    /// The caller keeps ownership of `descriptor`. `failed` is called with the error number, on the
    /// writer's thread, whenever a text cannot be written; that text is discarded. When more than
    /// `limit` bytes are pending, the oldest lines are discarded, and one line says how many.
    BackgroundWriter(int descriptor, std::function<void(int error)> failed,
                     std::size_t limit = std::numeric_limits<std::size_t>::max());

    void write(const std::string& text);

    /// Waits until nothing is pending. Returns false at the timeout, or if a text was not written.
    bool flush(std::chrono::milliseconds timeout);
    /// The same without a timeout.
    bool flush();
    /// The same for a reader that may be slow: waits for as long as it takes some of the text
    /// within each `pause`.
    bool flushWhileRead(std::chrono::milliseconds pause);

    /// The first error number, or 0.
    int failure() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace vistrane
