#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace vistrane {

/// A value that one thread replaces whole while another reads it. A reader keeps what it has
/// loaded; a replacement never changes that.
///
/// A mutex is held while the pointer is copied and for nothing else. An atomic shared pointer
/// would say the same, but one of the two standard libraries has none, and the other's cannot be
/// checked by the thread sanitizer.
template <typename T>
class Published {
public:
    std::shared_ptr<T> load() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    void store(std::shared_ptr<T> value) {
        {
            const std::lock_guard lock(mutex_);
            value_.swap(value);
        }
        // The old value goes here, outside the lock.
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<T> value_;
};

} // namespace vistrane
