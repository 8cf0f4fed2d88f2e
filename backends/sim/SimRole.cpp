#include "backends/sim/SimRole.h"

#include <utility>

namespace vistrane {

thread_local const ScopedSimRole* ScopedSimRole::current_ = nullptr;

ScopedSimRole::ScopedSimRole(Kind kind, std::shared_ptr<SimThread> thread)
    : kind_(kind), thread_(std::move(thread)), outer_(current_) {
    current_ = this;
}

ScopedSimRole::~ScopedSimRole() {
    current_ = outer_;
}

bool SimRole::isMain() {
    const ScopedSimRole* role = ScopedSimRole::current_;
    return role == nullptr || role->kind_ == ScopedSimRole::Kind::main;
}

std::shared_ptr<SimThread> SimRole::thread() {
    const ScopedSimRole* role = ScopedSimRole::current_;
    return role == nullptr ? nullptr : role->thread_;
}

const void* SimRole::key() {
    static const char mainKey = 0;
    static const char globalQueueKey = 0;
    if (isMain()) {
        return &mainKey;
    }
    const ScopedSimRole* role = ScopedSimRole::current_;
    return role->thread_ ? static_cast<const void*>(role->thread_.get()) : &globalQueueKey;
}

} // namespace vistrane
