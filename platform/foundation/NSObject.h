#pragma once

#include <cstdint>

namespace vistrane {

using NSInteger = std::int64_t;

/// The root of everything that can send an action or be held by a strong reference.
class NSObject {
public:
    virtual ~NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;

protected:
    NSObject() = default;
};

} // namespace vistrane
