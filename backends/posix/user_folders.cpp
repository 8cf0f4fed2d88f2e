#include "backends/posix/user_folders.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace vistrane {

namespace {

/// The variable's value if it is an absolute path, otherwise an empty string.
std::string folderOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value == '/' ? value : "";
}

} // namespace

std::string homeFolder() {
    std::string home = folderOf("HOME");
    if (!home.empty()) {
        return home;
    }
    const passwd* const user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/tmp";
}

std::string configurationFolder() {
    const std::string folder = folderOf("XDG_CONFIG_HOME");
    return folder.empty() ? homeFolder() + "/.config" : folder;
}

} // namespace vistrane
