#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// Compares strings by ICU's collation for a locale.
///
/// The options are always taken to be all four, as the program passes no others: case and width
/// do not count, accents and punctuation do, and digit runs have their numeric value. Bytes that
/// are not UTF-8 collate as the replacement character. What the collation calls equal is ordered by
/// bytes, which for UTF-8 is code point order. Any thread.
class IcuLocale final : public NSLocale {
public:
    /// The user's current locale. Reads the environment: no other thread may change it meanwhile.
    IcuLocale();
    /// A locale by its ICU identifier, for instance "de@collation=phonebook".
    explicit IcuLocale(const std::string& icuLocale);
    ~IcuLocale() override;

    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override;

    /// Makes the collation key of each text once. Needs some hundred bytes for each text while it
    /// runs and keeps nothing.
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override;

private:
    struct Collation;
    std::unique_ptr<const Collation> collation_;
};

} // namespace vistrane
