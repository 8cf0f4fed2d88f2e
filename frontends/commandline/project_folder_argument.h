#pragma once

#include <string>

namespace vistrane {

/// A project folder that was given on the command line, or why it cannot be used.
struct ProjectFolderArgument {
    /// Absolute, without ".", empty components or a trailing slash. Symbolic links are kept.
    std::string path;
    /// A one-line message. Empty if the folder can be used.
    std::string error;
};

/// Checks that `argument`, a relative or absolute path, is a folder that can be listed and is not
/// the root. Creates nothing.
ProjectFolderArgument projectFolderArgument(const std::string& argument);

/// Makes the folder and those above it that are missing. Returns a one-line message, or an empty
/// string if the folder exists then.
std::string createFolder(const std::string& argument);

} // namespace vistrane
