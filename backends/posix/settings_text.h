#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vistrane {

using SettingsValue = std::variant<std::int64_t, std::string, std::vector<std::uint8_t>>;
using Settings = std::map<std::string, SettingsValue>;

/// Settings, or what is wrong with their text.
struct SettingsResult {
    Settings settings;
    /// One line; empty for a good text.
    std::string error;
};

/// The settings as a text of lines that a person can read and edit:
///
///     Vistrane settings 1
///     "iData" = <76 02 ff>
///     "iFPS" = 30
///     "name" = "text"
///     end
///
/// In quotes, a backslash and two hexadecimal digits stand for a byte: so do quotes, backslashes
/// and everything that is not printable ASCII.
std::string settingsText(const Settings& settings);

/// Reads such a text. Anything else, a missing end included, is an error and gives no settings.
SettingsResult parseSettings(std::string_view text);

} // namespace vistrane
