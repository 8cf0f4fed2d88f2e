#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// Compares strings by ICU's collation for a locale.
///
/// The options are ignored, because the program always passes all four: case and width do not
/// count, accents and punctuation do, and digit runs are compared by value. Bytes that are not
/// UTF-8 collate as the replacement character. Texts that are equal by the collation are ordered by
/// bytes, which for UTF-8 is code point order. Any thread.
class IcuLocale final : public NSLocale {
public:
    /// Uses the user's current locale. Reads the environment, which no other thread may change
    /// meanwhile.
    IcuLocale();
    /// `icuLocale` is an ICU identifier, such as "de@collation=phonebook".
    explicit IcuLocale(const std::string& icuLocale);
    ~IcuLocale() override;

    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override;

    /// Makes the collation key of each text once. Needs about a hundred bytes per text while it
    /// runs, and keeps nothing.
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override;

private:
    struct Collation;
    std::unique_ptr<const Collation> collation_;
};

} // namespace vistrane
