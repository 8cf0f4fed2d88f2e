#pragma once

#include <string>

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Formats dates with the user's current locale, calendar and time zone. One thread at a time.
class NSDateFormatter : public NSObject {
public:
    /// Takes a Unicode (ICU) date pattern, unchanged: "Y" is the week-based year, "D" the day of
    /// the year.
    virtual void setDateFormat(const std::string& pattern) = 0;

    virtual std::string stringFromDate(NSDate date) const = 0;
};

} // namespace vistrane
