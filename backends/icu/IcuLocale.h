#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// Compares strings by ICU's collation for a locale.
///
/// Accents and punctuation always count. Case and width count unless their option is given; digit
/// runs have their numeric value with `NSNumericSearch`. Bytes that are no UTF-8 collate as the
/// replacement character; what the collation calls equal, `NSForcedOrderingSearch` orders by
/// bytes, which for UTF-8 is code point order. Any thread.
class IcuLocale final : public NSLocale {
public:
    /// The user's locale of this moment. Reads the environment: no other thread may be changing it.
    IcuLocale();
    /// A locale of that ICU identifier, for instance "de@collation=phonebook".
    explicit IcuLocale(const std::string& icuLocale);
    ~IcuLocale() override;

    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override;

    /// Makes the collation's key of each text once, if the options have keys: case and width both
    /// count or both do not. Takes some hundred bytes for each text while it runs and keeps
    /// nothing.
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override;

private:
    struct Collators;
    std::unique_ptr<const Collators> collators_;
};

} // namespace vistrane
