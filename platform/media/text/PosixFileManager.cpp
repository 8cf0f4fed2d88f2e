#include "platform/media/text/PosixFileManager.h"

#include <cerrno>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <sys/stat.h>

namespace vistrane {

namespace {

bool namesSomething(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

} // namespace

bool PosixFileManager::fileExistsAtPath(const std::string& path, bool& isDirectory) const {
    struct stat status {};
    if (!namesSomething(path) || stat(path.c_str(), &status) != 0) {
        return false;
    }
    isDirectory = S_ISDIR(status.st_mode);
    return true;
}

std::optional<std::vector<std::string>>
PosixFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    if (!namesSomething(path)) {
        return std::nullopt;
    }
    const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(path.c_str()));
    if (!directory) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = readdir(directory.get())) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
        errno = 0;
    }
    if (errno != 0) {
        return std::nullopt;
    }
    return names;
}

} // namespace vistrane
