#pragma once

#include <memory>
#include <string>

#include "platform/foundation/NSDateFormatter.h"

namespace vistrane {

/// Formats dates with ICU, which gets the pattern unchanged. Week rules, calendar and digits are
/// those of the locale.
///
/// The time zone is the user's: the TZ variable, else the system's. The offset from UTC always
/// agrees with the C library's `localtime`, also for TZ rules that ICU does not read
/// ("CET-1CEST,M3.5.0,M10.5.0/3"). Fractions of a second are rounded down to the millisecond, also
/// before 1970.
class IcuDateFormatter final : public NSDateFormatter {
public:
    /// The user's current locale and time zone. Reads the environment: no other thread may change
    /// it meanwhile.
    IcuDateFormatter();
    /// A locale by its ICU identifier, for instance "th_TH@calendar=gregorian".
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
