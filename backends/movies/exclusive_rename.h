#pragma once

#include <string>

namespace vistrane {

/// Renames the entry `from` of the open folder `folder` to `to` without replacing anything. 0, or
/// the errno value: EEXIST when `to` exists.
///
/// Atomic, except on file systems that have neither an exclusive rename nor links: there another
/// program that creates `to` at the same moment loses its file.
int renameWithoutReplacing(int folder, const std::string& from, const std::string& to);

} // namespace vistrane
