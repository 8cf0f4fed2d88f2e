#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/foundation/NSLocale.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Comparison of names with all four options. A backend has
///
///     std::shared_ptr<const NSLocale> locale();    American English
template <typename Backend>
class LocaleContract : public ::testing::Test {
protected:
    static constexpr std::uint32_t allOptions = NSCaseInsensitiveSearch | NSNumericSearch |
                                                NSWidthInsensitiveSearch | NSForcedOrderingSearch;

    NSComparisonResult compare(const std::string& first, const std::string& second) {
        return locale_->compare(first, second, allOptions, {0, first.size()});
    }
    std::vector<std::string> sortedByComparing(std::vector<std::string> names) {
        std::sort(names.begin(), names.end(), [this](const auto& first, const auto& second) {
            return compare(first, second) == NSOrderedAscending;
        });
        return names;
    }

    Backend backend_;
    const std::shared_ptr<const NSLocale> locale_ = backend_.locale();
};

TYPED_TEST_SUITE_P(LocaleContract);

TYPED_TEST_P(LocaleContract, NumbersCountByValueAndCaseDoesNotCount) {
    EXPECT_THAT(this->sortedByComparing({"frame2.png", "frame10.png", "Frame1.png"}),
                ::testing::ElementsAre("Frame1.png", "frame2.png", "frame10.png"));
}

TYPED_TEST_P(LocaleContract, FrameStampsSortByTime) {
    const std::vector<std::string> names = {"/f/26-03-07-14-05-08.png", "/f/26-03-07-14-05-09.png",
                                            "/f/26-03-07-14-05-10.png", "/f/26-03-07-15-00-00.png",
                                            "/f/26-12-01-00-00-00.png", "/f/27-01-01-00-00-00.png"};
    EXPECT_EQ(this->sortedByComparing({names.rbegin(), names.rend()}), names);
}

TYPED_TEST_P(LocaleContract, OnlyTheSameBytesAreTheSame) {
    EXPECT_EQ(this->compare("a1.png", "a1.png"), NSOrderedSame);
    EXPECT_EQ(this->compare("", ""), NSOrderedSame);
    EXPECT_NE(this->compare("A0", "A00"), NSOrderedSame);
    EXPECT_NE(this->compare("a.png", "A.png"), NSOrderedSame);
    EXPECT_NE(this->compare("\xff", "\xfe"), NSOrderedSame);
}

TYPED_TEST_P(LocaleContract, TiesAreBrokenByCodePoint) {
    EXPECT_EQ(this->compare("A.png", "a.png"), NSOrderedAscending);
    EXPECT_EQ(this->compare("a.png", "A.png"), NSOrderedDescending);
    EXPECT_EQ(this->compare("A0", "A00"), NSOrderedAscending);
    // Case alone is a tie, so the later difference decides.
    EXPECT_EQ(this->compare("B1", "b2"), NSOrderedAscending);
    EXPECT_EQ(this->compare("b1", "B2"), NSOrderedAscending);
}

TYPED_TEST_P(LocaleContract, TheRangeLimitsTheFirstStringOnly) {
    EXPECT_EQ(this->locale_->compare("abcdef", "cd", this->allOptions, {2, 2}), NSOrderedSame);
    EXPECT_EQ(this->locale_->compare("abc", "abc", this->allOptions, {0, 2}), NSOrderedAscending);
    EXPECT_EQ(this->locale_->compare("abc", "", this->allOptions, {3, 5}), NSOrderedSame);
    EXPECT_EQ(this->locale_->compare("abc", "bc", this->allOptions, {1, 100}), NSOrderedSame);
}

TYPED_TEST_P(LocaleContract, TextsAreSortedAsTheyCompare) {
    const std::vector<std::string> names = {"/f/b.png",    "/f/B.png",   "/f/a10.png", "/f/a9.png",
                                            "/f/A9.png",   "",           "/f/a9.png",  "/f/",
                                            "/f/\xff.png", "/f/a09.png", "/g/a"};
    auto texts = names;
    this->locale_->sort(texts, this->allOptions);
    EXPECT_EQ(texts, this->sortedByComparing(names));
}

TYPED_TEST_P(LocaleContract, NoTextAndOneTextAreSorted) {
    std::vector<std::string> texts;
    this->locale_->sort(texts, this->allOptions);
    EXPECT_THAT(texts, ::testing::IsEmpty());
    texts = {"/f/a.png"};
    this->locale_->sort(texts, this->allOptions);
    EXPECT_THAT(texts, ::testing::ElementsAre("/f/a.png"));
}

REGISTER_TYPED_TEST_SUITE_P(LocaleContract, NumbersCountByValueAndCaseDoesNotCount,
                            FrameStampsSortByTime, OnlyTheSameBytesAreTheSame,
                            TiesAreBrokenByCodePoint, TheRangeLimitsTheFirstStringOnly,
                            TextsAreSortedAsTheyCompare, NoTextAndOneTextAreSorted);

} // namespace vistrane
