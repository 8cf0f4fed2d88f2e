#pragma once

#include <memory>
#include <string>

#include "platform/FileNames.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The file system. Paths are bytes. Any thread.
class NSFileManager : public NSObject {
public:
    /// Follows links. `isDirectory` is set only if the path exists.
    virtual bool fileExistsAtPath(const std::string& path, bool& isDirectory) const = 0;

    /// The names of a folder's entries as bytes, including hidden ones, without "." and "..", in
    /// any order. Null if the folder cannot be listed. May be the same object as before while the
    /// folder is unchanged.
    virtual std::shared_ptr<const FileNames>
    contentsOfDirectoryAtPath(const std::string& path) const = 0;
};

} // namespace vistrane
