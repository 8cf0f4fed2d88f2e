#pragma once

#include <optional>

#include "platform/FileNames.h"

namespace vistrane {

/// The names of an open folder's entries, without "." and "..", by the fastest call that the system
/// has. Reads from the descriptor's position and moves it to the end. A folder that was removed
/// after it was opened has no entries. Nothing when the descriptor is not a folder's, and when an
/// error ends the listing early: half a listing would look as if files had been removed.
std::optional<FileNames> entryNames(int folder);

/// The reference implementation, on the C library's readdir. Used where there is no faster call.
std::optional<FileNames> entryNamesByReaddir(int folder);

} // namespace vistrane
