#include "backends/posix/entry_names.h"

#include <cerrno>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace vistrane {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// Duplicates the descriptor, because closing the result closes its descriptor.
std::unique_ptr<DIR, DirectoryCloser> opened(int folder) {
    const int own = fcntl(folder, F_DUPFD_CLOEXEC, 0);
    if (own < 0) {
        return nullptr;
    }
    std::unique_ptr<DIR, DirectoryCloser> directory(fdopendir(own));
    if (!directory) {
        close(own);
    }
    return directory;
}

} // namespace

std::optional<FileNames> entryNamesByReaddir(int folder) {
    const auto directory = opened(folder);
    if (!directory) {
        return std::nullopt;
    }
    FileNames names;
    errno = 0;
    while (const dirent* entry = readdir(directory.get())) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            names.append(name);
        }
        errno = 0;
    }
    if (errno != 0) {
        return std::nullopt;
    }
    return names;
}

#ifndef __linux__
std::optional<FileNames> entryNames(int folder) {
    return entryNamesByReaddir(folder);
}
#endif

} // namespace vistrane
