#pragma once

#include <memory>
#include <string>

#include "platform/foundation/NSDateFormatter.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Date patterns. A backend has
///
///     std::unique_ptr<NSDateFormatter> formatter();    American English and UTC
template <typename Backend>
class DateFormatterContract : public ::testing::Test {
protected:
    std::string text(const char* pattern, double secondsSince1970) {
        const std::unique_ptr<NSDateFormatter> formatter = backend_.formatter();
        formatter->setDateFormat(pattern);
        return formatter->stringFromDate({secondsSince1970});
    }
    std::string frameStamp(double secondsSince1970) {
        return text("YY-MM-dd-HH-mm-ss", secondsSince1970);
    }
    std::string movieStamp(double secondsSince1970) {
        return text("YYYYMMDD-HHmmss", secondsSince1970);
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(DateFormatterContract);

TYPED_TEST_P(DateFormatterContract, AFrameStampHasTwoDigitsForEachFieldAndNoFractions) {
    EXPECT_EQ(this->frameStamp(1772892309), "26-03-07-14-05-09");
    EXPECT_EQ(this->frameStamp(1772892309.999), "26-03-07-14-05-09");
}

TYPED_TEST_P(DateFormatterContract, AMovieStampHasTheDayOfTheYearWithTwoDigitsAtLeast) {
    EXPECT_EQ(this->movieStamp(1770300189), "20260236-140309");
    EXPECT_EQ(this->movieStamp(1767657600), "20260106-000000");
    EXPECT_EQ(this->movieStamp(1775692800), "20260499-000000");
    EXPECT_EQ(this->movieStamp(1775779200), "202604100-000000");
    EXPECT_EQ(this->movieStamp(1735603200), "202512366-000000");
}

TYPED_TEST_P(DateFormatterContract, LateDecemberMayBelongToTheNextYear) {
    EXPECT_EQ(this->frameStamp(1798329599), "26-12-26-23-59-59");
    EXPECT_EQ(this->frameStamp(1798329600), "27-12-27-00-00-00");
    EXPECT_EQ(this->frameStamp(1798588800), "27-12-30-00-00-00");
    EXPECT_EQ(this->movieStamp(1798588800), "202712364-000000");
    EXPECT_EQ(this->frameStamp(1798761600), "27-01-01-00-00-00");
}

REGISTER_TYPED_TEST_SUITE_P(DateFormatterContract,
                            AFrameStampHasTwoDigitsForEachFieldAndNoFractions,
                            AMovieStampHasTheDayOfTheYearWithTwoDigitsAtLeast,
                            LateDecemberMayBelongToTheNextYear);

} // namespace vistrane
