#include "frontends/commandline/project_folder_argument.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include <dirent.h>

#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// Removes components that change nothing. Resolves symbolic links only if ".." makes it necessary.
std::string shortened(const std::filesystem::path& path) {
    bool goesUp = false;
    std::string text;
    for (const auto& component : path) {
        const std::string& name = component.native();
        goesUp = goesUp || name == "..";
        const bool isSlashes = name.find_first_not_of('/') == std::string::npos;
        if (!isSlashes && name != ".") {
            text += "/" + name;
        }
    }
    if (goesUp) {
        const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                               &std::free);
        return real ? real.get() : path.native();
    }
    return text.empty() ? "/" : text;
}

bool isRoot(const std::string& path) {
    std::error_code error;
    return std::filesystem::equivalent(path, "/", error) && !error;
}

ProjectFolderArgument refused(const std::string& path, const std::string& reason) {
    return {{}, "Cannot use the folder '" + shownText(path) + "': " + reason};
}

} // namespace

ProjectFolderArgument projectFolderArgument(const std::string& argument) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(argument, error);
    if (error) {
        return refused(argument, error.message() + ".");
    }
    const std::string path = shortened(absolute);
    DIR* const folder = ::opendir(path.c_str());
    if (!folder) {
        const int reason = errno;
        const char* const advice =
            reason == EACCES ? ". Name a folder that you may read." : ". Name an existing folder.";
        return refused(path, std::strerror(reason) + std::string(advice));
    }
    ::closedir(folder);
    if (isRoot(path)) {
        return refused(path, "the root folder is not a valid working folder. Name another one.");
    }
    return {path, {}};
}

std::string createFolder(const std::string& argument) {
    std::error_code error;
    std::filesystem::create_directories(argument, error);
    return error ? "Cannot create the folder '" + shownText(argument) + "': " + error.message() +
                       ". Name a place that you may write to."
                 : "";
}

} // namespace vistrane
