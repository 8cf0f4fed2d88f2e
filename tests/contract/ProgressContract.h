#pragma once

#include <memory>

#include "platform/appkit/NSProgressIndicator.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Progress bars. A backend has
///
///     std::shared_ptr<NSProgressIndicator> progressBar();     a new one
///     double shownPart(NSProgressIndicator&);                 of the bar, from 0 to 1
template <typename Backend>
class ProgressContract : public ::testing::Test {
protected:
    /// A bar on a screen has no more steps than pixels.
    static constexpr double tolerance = 0.005;

    void expectPart(double part) { EXPECT_NEAR(backend_.shownPart(*bar_), part, tolerance); }

    Backend backend_;
    std::shared_ptr<NSProgressIndicator> bar_ = backend_.progressBar();
};

TYPED_TEST_SUITE_P(ProgressContract);

TYPED_TEST_P(ProgressContract, IsEmptyAtFirst) {
    this->expectPart(0.0);
}

TYPED_TEST_P(ProgressContract, ShowsTheValueAsAPartOfTheMaximum) {
    this->bar_->setMaxValue(8.0);
    for (const double value : {1.0, 2.0, 6.0, 8.0, 0.0}) {
        this->bar_->setDoubleValue(value);
        this->expectPart(value / 8.0);
    }
}

TYPED_TEST_P(ProgressContract, PartsOfAWholeNumberCount) {
    this->bar_->setMaxValue(1.0);
    this->bar_->setDoubleValue(0.25);
    this->expectPart(0.25);
}

TYPED_TEST_P(ProgressContract, AnotherMaximumCountsForTheValueThatIsThere) {
    this->bar_->setMaxValue(4.0);
    this->bar_->setDoubleValue(2.0);
    this->bar_->setMaxValue(8.0);
    this->expectPart(0.25);
}

TYPED_TEST_P(ProgressContract, AValueBeyondTheMaximumFillsIt) {
    this->bar_->setMaxValue(2.0);
    this->bar_->setDoubleValue(3.0);
    this->expectPart(1.0);
}

TYPED_TEST_P(ProgressContract, AGreatMaximumIsTaken) {
    this->bar_->setMaxValue(1e12);
    this->bar_->setDoubleValue(5e11);
    this->expectPart(0.5);
}

REGISTER_TYPED_TEST_SUITE_P(ProgressContract, IsEmptyAtFirst, ShowsTheValueAsAPartOfTheMaximum,
                            PartsOfAWholeNumberCount, AnotherMaximumCountsForTheValueThatIsThere,
                            AValueBeyondTheMaximumFillsIt, AGreatMaximumIsTaken);

} // namespace vistrane
