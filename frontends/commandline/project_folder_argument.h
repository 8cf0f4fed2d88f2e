#pragma once

#include <string>

namespace vistrane {

/// A project folder that was named on the command line, or why it cannot be one.
struct ProjectFolderArgument {
    /// Absolute, without a trailing slash, "." and empty components; links kept.
    std::string path;
    /// One line for people; empty when the folder can be used.
    std::string error;
};

/// Looks whether `argument`, relative to the working directory or absolute, is a folder that can
/// be listed and is not the root. Creates nothing.
ProjectFolderArgument projectFolderArgument(const std::string& argument);

} // namespace vistrane
