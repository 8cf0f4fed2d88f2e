#pragma once

#include <string>
#include <vector>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// The order of frames: digit runs are compared by value, case and width are ignored. Two different
/// names never compare equal.
NSComparisonResult frameNameCompare(const std::string& first, const std::string& second,
                                    const NSLocale& locale);

/// Sorts paths by `frameNameCompare`.
void sortFrames(std::vector<std::string>& paths, const NSLocale& locale);

} // namespace vistrane
