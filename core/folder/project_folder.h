#pragma once

#include <optional>
#include <string>

namespace vistrane {

class NSButton;

/// The folder button's title while no folder is chosen. It is both shown and compared with.
inline constexpr char noFolderTitle[] = "click to select the output folder";

/// The project folder's path, absolute, without a trailing slash: the folder button's title.
/// Nothing when no folder is chosen.
std::optional<std::string> chosenFolder(const NSButton& outfolderB);

} // namespace vistrane
