#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/foundation/NSData.h"

namespace vistrane {

/// The bytes of a still.
class PhotoBytes final : public NSData {
public:
    explicit PhotoBytes(std::vector<std::uint8_t> bytes);

    const std::uint8_t* bytes() const override;
    std::size_t length() const override;
    bool writeToFile(const std::string& path, bool atomically) const override;

private:
    std::vector<std::uint8_t> bytes_;
};

} // namespace vistrane
