#include "backends/movies/exclusive_rename.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "backends/posix/Descriptor.h"

namespace vistrane {

namespace {

bool isUnsupported(int number) {
    return number == EINVAL || number == ENOSYS || number == EOPNOTSUPP || number == EPERM;
}

/// For file systems that have links but no exclusive rename, such as network file systems.
int linkAndUnlink(int folder, const std::string& from, const std::string& to) {
    const auto link = [&] { return ::linkat(folder, from.c_str(), folder, to.c_str(), 0); };
    if (uninterrupted(link) != 0) {
        return errno;
    }
    ::unlinkat(folder, from.c_str(), 0);
    return 0;
}

/// For file systems that have neither, such as the shared folders of virtual machines.
int lookAndRename(int folder, const std::string& from, const std::string& to) {
    struct stat status {};
    if (::fstatat(folder, to.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    const auto rename = [&] { return ::renameat(folder, from.c_str(), folder, to.c_str()); };
    return errno == ENOENT && uninterrupted(rename) == 0 ? 0 : errno;
}

} // namespace

int renameWithoutReplacing(int folder, const std::string& from, const std::string& to) {
    const auto rename = [&] {
        return ::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE);
    };
    int number = uninterrupted(rename) == 0 ? 0 : errno;
    if (isUnsupported(number)) {
        number = linkAndUnlink(folder, from, to);
    }
    if (isUnsupported(number)) {
        number = lookAndRename(folder, from, to);
    }
    return number;
}

} // namespace vistrane
