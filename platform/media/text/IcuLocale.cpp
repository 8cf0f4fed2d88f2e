#include "platform/media/text/IcuLocale.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/media/text/user_locale.h"

namespace vistrane {

namespace {

std::unique_ptr<const icu::Collator> makeCollator(const icu::Locale& locale, bool numeric,
                                                  icu::Collator::ECollationStrength strength) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status) != 0) {
        return nullptr;
    }
    collator->setStrength(strength);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, numeric ? UCOL_ON : UCOL_OFF, status);
    // Some locales skip punctuation by default: "a-b" and "ab" would be the same.
    collator->setAttribute(UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, status);
    // Names may come decomposed or not, from one file system or another.
    collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    return U_FAILURE(status) != 0 ? nullptr : std::move(collator);
}

/// The rules for collation. Those of POSIX are no language's: they tell the cases apart as if they
/// were different letters, which no option could undo.
icu::Locale collationLocale(const std::string& icuLocale) {
    return icuLocale == "en_US_POSIX" ? icu::Locale::getRoot()
                                      : icu::Locale::createCanonical(icuLocale.c_str());
}

/// Wide and narrow forms become the plain characters that they are forms of.
icu::UnicodeString withoutWidth(const icu::UnicodeString& text) {
    icu::UnicodeString plain;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        icu::UnicodeString character(text.char32At(at));
        const auto form = u_getIntPropertyValue(text.char32At(at), UCHAR_DECOMPOSITION_TYPE);
        if (form == U_DT_WIDE || form == U_DT_NARROW) {
            UErrorCode status = U_ZERO_ERROR;
            character = icu::Normalizer2::getNFKDInstance(status)->normalize(character, status);
        }
        plain.append(character);
    }
    return plain;
}

icu::StringPiece pieceOf(std::string_view bytes) {
    constexpr std::size_t limit = std::numeric_limits<std::int32_t>::max();
    return {bytes.data(), static_cast<std::int32_t>(std::min(bytes.size(), limit))};
}

NSComparisonResult resultOf(int difference) {
    if (difference == 0) {
        return NSOrderedSame;
    }
    return difference < 0 ? NSOrderedAscending : NSOrderedDescending;
}

std::string_view part(const std::string& text, NSRange range) {
    return std::string_view(text).substr(std::min(range.location, text.size()), range.length);
}

/// `NSForcedOrderingSearch`: equal only when the bytes are.
int byteOrder(std::string_view first, std::string_view second) {
    return first.compare(second);
}

} // namespace

struct IcuLocale::Collators {
    explicit Collators(const icu::Locale& locale)
        : turkic(locale.getLanguage() == std::string_view("tr") ||
                 locale.getLanguage() == std::string_view("az")) {
        for (const bool numeric : {false, true}) {
            letters[numeric] = makeCollator(locale, numeric, icu::Collator::SECONDARY);
            forms[numeric] = makeCollator(locale, numeric, icu::Collator::TERTIARY);
        }
    }

    int compare(std::string_view first, std::string_view second, std::uint32_t options) const {
        const bool numeric = (options & NSNumericSearch) != 0;
        const bool anyCase = (options & NSCaseInsensitiveSearch) != 0;
        const bool anyWidth = (options & NSWidthInsensitiveSearch) != 0;
        const icu::Collator* collator = (anyCase && anyWidth ? letters : forms)[numeric].get();
        if (collator == nullptr) {
            return byteOrder(first, second);
        }
        UErrorCode status = U_ZERO_ERROR;
        // The collation's third level holds case and width together: to let only one of them
        // count, the other is taken out of the text.
        if (anyCase != anyWidth) {
            return collator->compare(folded(first, anyCase), folded(second, anyCase), status);
        }
        return collator->compareUTF8(pieceOf(first), pieceOf(second), status);
    }

    icu::UnicodeString folded(std::string_view bytes, bool caseNotWidth) const {
        icu::UnicodeString text = icu::UnicodeString::fromUTF8(pieceOf(bytes));
        if (!caseNotWidth) {
            return withoutWidth(text);
        }
        return text.foldCase(turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
    }

    /// Each without and with numeric order: accents count; accents, case and width count.
    std::unique_ptr<const icu::Collator> letters[2];
    std::unique_ptr<const icu::Collator> forms[2];
    /// Whether dotted and dotless i are two letters.
    bool turkic;
};

IcuLocale::IcuLocale() : IcuLocale(userLocale(LocaleCategory::collation)) {}

IcuLocale::IcuLocale(const std::string& icuLocale)
    : collators_(std::make_unique<const Collators>(collationLocale(icuLocale))) {}

IcuLocale::~IcuLocale() = default;

NSComparisonResult IcuLocale::compare(const std::string& first, const std::string& second,
                                      std::uint32_t options, NSRange range) const {
    const std::string_view compared = part(first, range);
    const int difference = collators_->compare(compared, second, options);
    if (difference == 0 && (options & NSForcedOrderingSearch) != 0) {
        return resultOf(byteOrder(compared, second));
    }
    return resultOf(difference);
}

} // namespace vistrane
