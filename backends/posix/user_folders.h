#pragma once

#include <string>

namespace vistrane {

/// The user's home folder, or "/tmp" if there is none. Absolute.
std::string homeFolder();

/// The folder for the user's settings: `XDG_CONFIG_HOME` if it is an absolute path, otherwise
/// ".config" in the home folder. It may not exist.
std::string configurationFolder();

} // namespace vistrane
