#pragma once

#include <optional>
#include <string>

#include "backends/sim/CallLog.h"
#include "platform/foundation/NSDateFormatter.h"

namespace vistrane {

/// Which week of the turn of the year belongs to which year.
struct SimWeekRule {
    /// 0 is Sunday.
    unsigned firstDay = 0;
    /// A week belongs to the year in which it has at least so many days.
    unsigned minimalDays = 1;

    static constexpr SimWeekRule unitedStates() { return {0, 1}; }
    static constexpr SimWeekRule iso8601() { return {1, 4}; }
};

/// What every formatter made by a sim goes by.
struct SimDateRules {
    SimWeekRule weeks;
    /// The answer to everything, in place of a formatted date.
    std::optional<std::string> fixedAnswer;
};

/// Formats in UTC with the letters Y (week-based year), y, M, d, D (day of the year), H, m and s:
/// two letters of a year give its last two digits, any other number of letters is the least number
/// of digits. Other characters stand for themselves.
class SimDateFormatter final : public NSDateFormatter, public SimObject {
public:
    SimDateFormatter(CallLog& log, const SimDateRules& rules)
        : SimObject(log, "dateFormatter"), rules_(rules) {}

    void setDateFormat(const std::string& pattern) override;
    std::string stringFromDate(NSDate date) const override;

private:
    SimDateRules rules_;
    std::string pattern_;
};

} // namespace vistrane
