#pragma once

#include <optional>

#include "platform/FileNames.h"

namespace vistrane {

/// The names of an open folder's entries without "." and "..", by the quickest way that the system
/// has; read from where the descriptor stands, which it moves to the end. A folder that was removed
/// meanwhile has none. Nothing when the descriptor is no folder's, and when an error cuts the
/// listing short: half a folder would look as if files had been removed.
std::optional<FileNames> entryNames(int folder);

/// The same by way of the C library, on any system.
std::optional<FileNames> entryNamesByReaddir(int folder);

} // namespace vistrane
