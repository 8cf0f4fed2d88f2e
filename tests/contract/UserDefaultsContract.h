#pragma once

#include <limits>

#include <gmock/gmock.h>

#include "platform/foundation/NSUserDefaults.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The settings. A backend has
///
///     NSUserDefaults& userDefaults();    empty
template <typename Backend>
class UserDefaultsContract : public ::testing::Test {
protected:
    NSUserDefaults& defaults() { return backend_.userDefaults(); }

    Backend backend_;
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, AnAbsentKeyGivesNothing) {
    EXPECT_EQ(this->defaults().integerForKey("iHour"), 0);
    EXPECT_EQ(this->defaults().objectForKey("iData"), std::nullopt);
    EXPECT_EQ(this->defaults().stringForKey("iHour"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, AnIntegerComesBack) {
    using Limits = std::numeric_limits<NSInteger>;
    for (const NSInteger value : {NSInteger{0}, NSInteger{-1}, Limits::max(), Limits::min()}) {
        this->defaults().setInteger(value, "iHour");
        EXPECT_EQ(this->defaults().integerForKey("iHour"), value);
    }
}

TYPED_TEST_P(UserDefaultsContract, BytesComeBack) {
    const std::vector<std::uint8_t> bytes = {0, 255, '\n', '=', 0};
    this->defaults().setObject(bytes, "iData");
    EXPECT_EQ(this->defaults().objectForKey("iData"), bytes);
    this->defaults().setObject({}, "iData");
    EXPECT_EQ(this->defaults().objectForKey("iData"), std::vector<std::uint8_t>());
}

TYPED_TEST_P(UserDefaultsContract, KeysAreToldApartByCase) {
    this->defaults().setInteger(1, "iMinue");
    this->defaults().setInteger(2, "iMinute");
    this->defaults().setInteger(3, "iminute");
    EXPECT_EQ(this->defaults().integerForKey("iMinue"), 1);
    EXPECT_EQ(this->defaults().integerForKey("iMinute"), 2);
    EXPECT_EQ(this->defaults().integerForKey("iminute"), 3);
}

TYPED_TEST_P(UserDefaultsContract, AKeyHoldsWhatWasSetLast) {
    this->defaults().setInteger(7, "key");
    this->defaults().setObject({1, 2}, "key");
    EXPECT_EQ(this->defaults().integerForKey("key"), 0);
    this->defaults().setInteger(8, "key");
    EXPECT_EQ(this->defaults().integerForKey("key"), 8);
    EXPECT_EQ(this->defaults().objectForKey("key"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, SynchronizeKeepsTheValues) {
    this->defaults().setInteger(7, "iHour");
    this->defaults().synchronize();
    EXPECT_EQ(this->defaults().integerForKey("iHour"), 7);
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, AnAbsentKeyGivesNothing, AnIntegerComesBack,
                            BytesComeBack, KeysAreToldApartByCase, AKeyHoldsWhatWasSetLast,
                            SynchronizeKeepsTheValues);

} // namespace vistrane
