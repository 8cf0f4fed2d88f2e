#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace vistrane {

/// Writes results to a descriptor on a thread of its own, in their order: a reader that does not
/// read holds up nobody else, and no frame is lost for it.
class ResultWriter {
public:
    /// `descriptor` stays the caller's. `failed` is called once, on the writer's thread, with the
    /// error number when the descriptor takes no more; what is written after that is dropped.
    ResultWriter(int descriptor, std::function<void(int error)> failed);

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
