#pragma once

#include <memory>
#include <string>

#include "backends/posix/FolderListings.h"
#include "platform/foundation/NSFileManager.h"

namespace vistrane {

/// The POSIX file system. A path that contains a zero byte does not exist.
class PosixFileManager final : public NSFileManager {
public:
    bool fileExistsAtPath(const std::string& path, bool& isDirectory) const override;

    /// Also null if an error ends the listing early: an incomplete listing would look as if files
    /// had been removed. An unchanged folder is not read again: see FolderListings.h.
    std::shared_ptr<const FileNames>
    contentsOfDirectoryAtPath(const std::string& path) const override;

private:
    mutable FolderListings listings_;
};

} // namespace vistrane
