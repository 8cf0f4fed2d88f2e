#pragma once

#include <string>

namespace vistrane {

/// Gives the entry `from` of the open folder `folder` the name `to` in the same folder, in one
/// step that never replaces what is there. 0, or the error number: EEXIST when `to` is taken.
int renameWithoutReplacing(int folder, const std::string& from, const std::string& to);

} // namespace vistrane
