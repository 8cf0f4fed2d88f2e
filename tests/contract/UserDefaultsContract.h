#pragma once

#include <initializer_list>
#include <limits>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "platform/foundation/NSUserDefaults.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The settings. A backend has
///
///     NSUserDefaults& userDefaults();    empty at first
///     void storeText(const std::string& text, const std::string& key);    as another program does
///     bool reopen();      as after a crash and another start; false when nothing is ever kept
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

TYPED_TEST_P(UserDefaultsContract, ATextComesBack) {
    this->backend_.storeText("Dark", "AppleInterfaceStyle");
    EXPECT_EQ(this->defaults().stringForKey("AppleInterfaceStyle"), "Dark");
    EXPECT_EQ(this->defaults().objectForKey("AppleInterfaceStyle"), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, ATextIsReadAsItsLeadingInteger) {
    for (const auto& [text, number] : std::initializer_list<std::pair<const char*, NSInteger>>{
             {"1", 1}, {" 12x", 12}, {"-3", -3}, {"5.9", 5}, {"abc", 0}, {"x1", 0}, {"", 0}}) {
        this->backend_.storeText(text, "firstTimeRunning");
        EXPECT_EQ(this->defaults().integerForKey("firstTimeRunning"), number) << text;
    }
}

TYPED_TEST_P(UserDefaultsContract, SynchronizeKeepsTheValues) {
    this->defaults().setInteger(7, "iHour");
    this->defaults().setObject({0, 255}, "iData");
    this->defaults().synchronize();
    if (!this->backend_.reopen()) {
        GTEST_SKIP() << "These settings are kept for one run only.";
    }
    EXPECT_EQ(this->defaults().integerForKey("iHour"), 7);
    EXPECT_EQ(this->defaults().objectForKey("iData"), (std::vector<std::uint8_t>{0, 255}));
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, AnAbsentKeyGivesNothing, AnIntegerComesBack,
                            BytesComeBack, KeysAreToldApartByCase, AKeyHoldsWhatWasSetLast,
                            ATextComesBack, ATextIsReadAsItsLeadingInteger,
                            SynchronizeKeepsTheValues);

} // namespace vistrane
