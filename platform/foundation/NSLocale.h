#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/foundation/NSObject.h"

namespace vistrane {

enum NSComparisonResult : int {
    NSOrderedAscending = -1,
    NSOrderedSame = 0,
    NSOrderedDescending = 1
};

/// Options of a string comparison; combine them with "|". The program always passes all four, so
/// back ends need not implement other combinations.
enum NSStringCompareOptions : std::uint32_t {
    NSCaseInsensitiveSearch = 1,
    NSNumericSearch = 64,
    NSWidthInsensitiveSearch = 256,
    NSForcedOrderingSearch = 512,
};

/// A range of a string, in bytes.
struct NSRange {
    std::size_t location = 0;
    std::size_t length = 0;
};

/// The user's language rules for comparing strings. Immutable; any thread.
class NSLocale : public NSObject {
public:
    /// Compares the `range` of `first` with all of `second` (`compare:options:range:locale:` of a
    /// string). With `NSForcedOrderingSearch` only identical byte strings are equal: strings that
    /// are equal by the other options are ordered by code point. The result is a strict weak order
    /// over any bytes, valid UTF-8 or not.
    virtual NSComparisonResult compare(const std::string& first, const std::string& second,
                                       std::uint32_t options, NSRange range) const = 0;

    /// Sorts the texts by `compare`, over their whole length. The sort is stable.
    virtual void sort(std::vector<std::string>& texts, std::uint32_t options) const = 0;
};

} // namespace vistrane
