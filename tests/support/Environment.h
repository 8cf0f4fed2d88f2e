#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace vistrane {

/// Sets an environment variable while it lives, or unsets it.
class Environment {
public:
    Environment(std::string name, const char* value) : name_(std::move(name)) {
        if (const char* before = std::getenv(name_.c_str())) {
            before_ = before;
        }
        set(value);
    }
    ~Environment() { set(before_ ? before_->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void set(const char* value) {
        if (value == nullptr) {
            unsetenv(name_.c_str());
        } else {
            setenv(name_.c_str(), value, 1);
        }
    }

    std::string name_;
    std::optional<std::string> before_;
};

} // namespace vistrane
