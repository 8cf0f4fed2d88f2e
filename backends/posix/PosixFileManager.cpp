#include "backends/posix/PosixFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "backends/posix/entry_names.h"

namespace vistrane {

namespace {

bool namesSomething(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

/// Closed at the end of its scope.
class OpenFolder {
public:
    explicit OpenFolder(const std::string& path)
        : number_(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC)) {}
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    ~OpenFolder() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    /// Negative when the folder could not be opened.
    int number() const { return number_; }

private:
    const int number_;
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

std::optional<FileNames>
PosixFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    if (!namesSomething(path)) {
        return std::nullopt;
    }
    const OpenFolder folder(path);
    return folder.number() < 0 ? std::nullopt : entryNames(folder.number());
}

} // namespace vistrane
