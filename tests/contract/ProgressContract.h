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

TYPED_TEST_P(ProgressContract, IsEmptyThenShowsTheValueAsAPartOfTheMaximum) {
    this->expectPart(0.0);
    const struct {
        double maximum;
        double value;
        double part;
    } rows[] = {{8.0, 1.0, 0.125}, {8.0, 6.0, 0.75}, {8.0, 8.0, 1.0},  {8.0, 0.0, 0.0},
                {1.0, 0.25, 0.25}, {2.0, 3.0, 1.0},  {1e12, 5e11, 0.5}};
    for (const auto& row : rows) {
        this->bar_->setMaxValue(row.maximum);
        this->bar_->setDoubleValue(row.value);
        this->expectPart(row.part);
    }
}

TYPED_TEST_P(ProgressContract, AnotherMaximumCountsForTheValueThatIsThere) {
    this->bar_->setMaxValue(4.0);
    this->bar_->setDoubleValue(2.0);
    this->bar_->setMaxValue(8.0);
    this->expectPart(0.25);
}

REGISTER_TYPED_TEST_SUITE_P(ProgressContract, IsEmptyThenShowsTheValueAsAPartOfTheMaximum,
                            AnotherMaximumCountsForTheValueThatIsThere);

} // namespace vistrane
