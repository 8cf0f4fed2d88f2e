#pragma once

#include <string>

namespace vistrane {

/// Renames the entry `from` of the open folder `folder` to `to`, atomically and without replacing
/// anything. Returns 0 or the errno value, EEXIST if `to` exists.
int renameWithoutReplacing(int folder, const std::string& from, const std::string& to);

} // namespace vistrane
