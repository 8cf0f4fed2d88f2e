#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/NSNib.h"

namespace vistrane {

/// Fills an object's outlets by name and lists the required ones that the interface file lacks.
class Outlets {
public:
    explicit Outlets(NSNib& nib) : nib_(nib) {}

    template <typename Control>
    void require(const std::string& name, std::shared_ptr<Control>& field) {
        nib_.outlet(name, field);
        if (!field) {
            missing_.push_back(name);
        }
    }

    /// An outlet that may be missing.
    template <typename Control>
    void take(const std::string& name, std::shared_ptr<Control>& field) {
        nib_.outlet(name, field);
    }

    const std::vector<std::string>& missing() const { return missing_; }

private:
    NSNib& nib_;
    std::vector<std::string> missing_;
};

} // namespace vistrane
