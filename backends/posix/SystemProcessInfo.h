#pragma once

#include "platform/foundation/NSProcessInfo.h"

namespace vistrane {

/// The distribution's name and version, otherwise the kernel's.
class SystemProcessInfo final : public NSProcessInfo {
public:
    /// `osRelease` is the path of a file in os-release(5) format.
    explicit SystemProcessInfo(std::string osRelease = "/etc/os-release");

    /// For instance "Debian GNU/Linux 12 (bookworm)".
    std::string operatingSystemVersionString() const override;

private:
    std::string osRelease_;
};

} // namespace vistrane
