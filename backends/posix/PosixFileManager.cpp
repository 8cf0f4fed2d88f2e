#include "backends/posix/PosixFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "backends/posix/Descriptor.h"
#include "backends/posix/entry_names.h"

namespace vistrane {

namespace {

bool namesSomething(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

} // namespace

bool PosixFileManager::fileExistsAtPath(const std::string& path, bool& isDirectory) const {
    struct stat status {};
    if (!namesSomething(path) || stat(path.c_str(), &status) != 0) {
        return false;
    }
    isDirectory = S_ISDIR(status.st_mode);
    return true;
}

std::optional<FileNames>
PosixFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    if (!namesSomething(path)) {
        return std::nullopt;
    }
    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    return folder.isOpen() ? entryNames(folder.number()) : std::nullopt;
}

} // namespace vistrane
