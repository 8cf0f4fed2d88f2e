#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// A comparison that is the same everywhere: digit runs by value, ASCII letters without case, full
/// width forms as their narrow ones, else by code point; each as the options ask.
class SimLocale final : public NSLocale, public SimObject {
public:
    explicit SimLocale(CallLog& log) : SimObject(log, "currentLocale") {}

    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override;
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override;
};

} // namespace vistrane
