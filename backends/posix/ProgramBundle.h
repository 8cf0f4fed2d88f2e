#pragma once

#include <string>
#include <utility>

#include "platform/foundation/NSBundle.h"

namespace vistrane {

/// The bundle information for a version "MAJOR.MINOR.PATCH": the short version is the part before
/// the last dot, the bundle version is the part after it.
class ProgramBundle final : public NSBundle {
public:
    explicit ProgramBundle(std::string version) : version_(std::move(version)) {}

    std::optional<std::string> objectForInfoDictionaryKey(const std::string& key) const override {
        const std::size_t point = version_.rfind('.');
        if (key == "CFBundleShortVersionString") {
            return version_.substr(0, point);
        }
        if (key == "CFBundleVersion" && point != std::string::npos) {
            return version_.substr(point + 1);
        }
        return std::nullopt;
    }

private:
    std::string version_;
};

} // namespace vistrane
