#pragma once

#include <memory>
#include <string>

#include "platform/foundation/NSDateFormatter.h"

namespace vistrane {

/// Formats dates with ICU, to which the pattern is passed unchanged. Week rules, calendar and
/// digits are those of the locale.
///
/// The time zone is the TZ variable's, otherwise the system's. The offset from UTC always agrees
/// with the C library's `localtime`, even for TZ rules that ICU does not read
/// ("CET-1CEST,M3.5.0,M10.5.0/3"). Times are rounded down to whole milliseconds, even before 1970.
class IcuDateFormatter final : public NSDateFormatter {
public:
    /// Uses the user's current locale and time zone. Reads the environment, which no other thread
    /// may change meanwhile.
    IcuDateFormatter();
    /// `icuLocale` is an ICU identifier, such as "th_TH@calendar=gregorian".
    explicit IcuDateFormatter(const std::string& icuLocale);
    ~IcuDateFormatter() override;

    void setDateFormat(const std::string& pattern) override;

    /// Empty before `setDateFormat`, and for a pattern that ICU refuses.
    std::string stringFromDate(NSDate date) const override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vistrane
