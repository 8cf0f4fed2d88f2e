#pragma once

#include <memory>
#include <string>

#include "platform/foundation/NSDateFormatter.h"

namespace vistrane {

/// Formats dates with ICU. Pattern letters, week rules, calendar and digits are those of the
/// locale, as ICU has them; the pattern reaches ICU unchanged.
///
/// The time zone is the user's: the TZ variable, else the system's. The moment's offset from UTC
/// always agrees with the C library's `localtime`, also where TZ holds a rule that ICU does not
/// read ("CET-1CEST,M3.5.0,M10.5.0/3"). Fractions of a second are cut down to the millisecond,
/// before 1970 too.
class IcuDateFormatter final : public NSDateFormatter {
public:
    /// With the user's locale and time zone of this moment. Reads the environment: no other thread
    /// may be changing it.
    IcuDateFormatter();
    /// With a locale of that ICU identifier, for instance "th_TH@calendar=gregorian".
    explicit IcuDateFormatter(const std::string& icuLocale);
    ~IcuDateFormatter() override;

    void setDateFormat(const std::string& pattern) override;

    /// Empty before `setDateFormat` and for a pattern that ICU refuses.
    std::string stringFromDate(NSDate date) const override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vistrane
