#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace vistrane {

/// Writes text to a descriptor on a thread of its own, in its order: a reader that does not read
/// holds up nobody else, and no frame is lost for it. Any thread.
class BackgroundWriter {
public:
    /// `descriptor` stays the caller's. `failed` is called once, on the writer's thread, with the
    /// error number when the descriptor takes no more; what is written after that is dropped.
    /// A text is dropped when it comes while more than `limit` bytes wait.
    BackgroundWriter(int descriptor, std::function<void(int error)> failed,
                     std::size_t limit = std::numeric_limits<std::size_t>::max());

    void write(const std::string& text);

    /// Waits until all is written. False when that failed or took longer than `patience`.
    bool flush(std::chrono::milliseconds patience);
    /// The same, however long it takes.
    bool flush();

    /// The error number, or 0.
    int failure() const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace vistrane
