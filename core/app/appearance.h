#pragma once

#include <optional>
#include <string>

namespace vistrane {

/// The system's interface style as last read by `AppDelegate::darkModeChanged`: "Dark" before the
/// first reading, nothing for the light appearance. One for the process, main thread only.
std::optional<std::string>& interfaceStyle();

/// Whether `interfaceStyle` is dark.
bool isDark();

} // namespace vistrane
