#pragma once

#include <string>
#include <vector>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// The order of frames: digit runs by value, case and width ignored, and no two different names
/// the same.
NSComparisonResult frameNameCompare(const std::string& first, const std::string& second,
                                    const NSLocale& locale);

/// Brings paths into the order of `frameNameCompare`.
void sortFrames(std::vector<std::string>& paths, const NSLocale& locale);

} // namespace vistrane
