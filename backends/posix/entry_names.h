#pragma once

#include <optional>

#include "platform/FileNames.h"

namespace vistrane {

/// The names of an open folder's entries, without "." and "..", by the system's fastest call. Reads
/// from the descriptor's position and moves it to the end. A folder that was removed after it was
/// opened has no entries. Nothing if the descriptor is not a folder's, or if an error ends the
/// listing early: an incomplete listing would look as if files had been removed.
std::optional<FileNames> entryNames(int folder);

/// The reference implementation, with readdir. Used where there is no faster call.
std::optional<FileNames> entryNamesByReaddir(int folder);

} // namespace vistrane
