#pragma once

#include <string>

namespace vistrane {

/// The absolute path of the user's Videos folder: from `user-dirs.dirs` in the configuration
/// folder, otherwise "Videos" in the home folder. It may not exist.
std::string videosFolder();

/// The path of a new folder, or the reason why there is none.
struct NewFolder {
    std::string path;
    std::string error;
};

/// Creates a folder named after the local time in `parent`, and `parent` if it does not exist.
NewFolder createDemoFolder(const std::string& parent);

/// Removes such a folder if it is empty. Any thread.
void removeIfEmpty(const std::string& folder);

} // namespace vistrane
