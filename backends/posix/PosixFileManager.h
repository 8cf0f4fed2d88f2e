#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSFileManager.h"

namespace vistrane {

/// The POSIX file system. A path that contains a zero byte does not exist.
class PosixFileManager final : public NSFileManager {
public:
    bool fileExistsAtPath(const std::string& path, bool& isDirectory) const override;

    /// Also nothing if an error ends the listing early: an incomplete listing would look as if
    /// files had been removed.
    std::optional<FileNames> contentsOfDirectoryAtPath(const std::string& path) const override;
};

} // namespace vistrane
