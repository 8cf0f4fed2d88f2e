#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSFileManager.h"

namespace vistrane {

/// The file system as POSIX shows it. A path with a zero byte names nothing.
class PosixFileManager final : public NSFileManager {
public:
    bool fileExistsAtPath(const std::string& path, bool& isDirectory) const override;

    /// Nothing also when an error cuts the listing short: half a folder would look as if files had
    /// been removed.
    std::optional<FileNames> contentsOfDirectoryAtPath(const std::string& path) const override;
};

} // namespace vistrane
