#include "backends/movies/exclusive_rename.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace vistrane {

namespace {

/// For file systems that have links but no exclusive rename, such as network file systems.
int linkAndUnlink(int folder, const std::string& from, const std::string& to) {
    if (::linkat(folder, from.c_str(), folder, to.c_str(), 0) != 0) {
        return errno;
    }
    ::unlinkat(folder, from.c_str(), 0);
    return 0;
}

} // namespace

int renameWithoutReplacing(int folder, const std::string& from, const std::string& to) {
    if (::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    const int number = errno;
    const bool isUnsupported = number == EINVAL || number == ENOSYS || number == EOPNOTSUPP;
    return isUnsupported ? linkAndUnlink(folder, from, to) : number;
}

} // namespace vistrane
