#pragma once

#include <memory>

namespace vistrane {

class SimThread;

/// Which of the program's threads the running code stands for. The sim runs most of them on the
/// test's own thread, one after another; this says whose turn it is.
class SimRole {
public:
    static bool isMain();
    /// The thread object whose entry is running; null on the main thread and on the global queue.
    static std::shared_ptr<SimThread> thread();
    /// Differs for each role; for state that a thread keeps for itself.
    static const void* key();
};

/// Runs the code of its scope in another role.
class ScopedSimRole {
public:
    static ScopedSimRole main() { return {Kind::main, nullptr}; }
    static ScopedSimRole globalQueue() { return {Kind::globalQueue, nullptr}; }
    static ScopedSimRole thread(std::shared_ptr<SimThread> thread) {
        return {Kind::thread, std::move(thread)};
    }
    ScopedSimRole(const ScopedSimRole&) = delete;
    ScopedSimRole& operator=(const ScopedSimRole&) = delete;
    ~ScopedSimRole();

private:
    friend class SimRole;
    enum class Kind { main, globalQueue, thread };
    ScopedSimRole(Kind kind, std::shared_ptr<SimThread> thread);

    static thread_local const ScopedSimRole* current_;

    Kind kind_;
    std::shared_ptr<SimThread> thread_;
    const ScopedSimRole* outer_;
};

} // namespace vistrane
