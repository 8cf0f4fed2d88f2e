#pragma once

#include <string>

namespace vistrane {

/// The user's home folder; "/tmp" for a user without one. Absolute.
std::string homeFolder();

/// The folder for the user's settings: `XDG_CONFIG_HOME` if it is an absolute path, else ".config"
/// in the home folder. May not exist.
std::string configurationFolder();

} // namespace vistrane
