#pragma once

#include <string>

namespace vistrane {

/// The user's Videos folder as the desktop's list of user folders (`user-dirs.dirs` in the
/// configuration folder) names it, else "Videos" in the home folder. Absolute; not created.
std::string videosFolder();

/// A new folder, or why there is none.
struct NewFolder {
    std::string path;
    std::string error;
};

/// Creates a folder in `parent` (and that too where it is missing), named after the local time.
NewFolder createDemoFolder(const std::string& parent);

/// Takes such a folder away again, unless something is in it. Any thread.
void removeIfEmpty(const std::string& folder);

} // namespace vistrane
