#pragma once

#include <string>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// The order of frames: digit runs by value, case and width ignored, and no two different names
/// the same.
NSComparisonResult frameNameCompare(const std::string& first, const std::string& second,
                                    const NSLocale& locale);

} // namespace vistrane
