#pragma once

#include "platform/foundation/NSProcessInfo.h"

namespace vistrane {

/// The distribution's own name for itself, else the kernel's.
class SystemProcessInfo final : public NSProcessInfo {
public:
    /// `osRelease` is a file of the form of os-release(5).
    explicit SystemProcessInfo(std::string osRelease = "/etc/os-release");

    /// For instance "Debian GNU/Linux 12 (bookworm)".
    std::string operatingSystemVersionString() const override;

private:
    std::string osRelease_;
};

} // namespace vistrane
