#include "backends/posix/PosixFileManager.h"

#include <sys/stat.h>

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

std::shared_ptr<const FileNames>
PosixFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    return namesSomething(path) ? listings_.list(path) : nullptr;
}

} // namespace vistrane
