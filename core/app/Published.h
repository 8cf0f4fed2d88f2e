#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace vistrane {

/// A value that one thread replaces whole while another reads it. A value that a reader has loaded
/// stays valid and unchanged after a replacement.
///
/// The mutex is held only while the pointer is copied. Not `std::atomic<std::shared_ptr>`: libc++
/// 14 lacks it, and ThreadSanitizer cannot check the one of libstdc++ 12.
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
        // The old value is destroyed here, outside the lock.
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<T> value_;
};

} // namespace vistrane
