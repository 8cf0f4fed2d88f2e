#include "backends/icu/IcuLocale.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/sortkey.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "backends/icu/user_locale.h"

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

/// Whether there is a digit beyond those of ASCII.
bool hasOtherDigit(std::string_view text) {
    const auto isBeyondAscii = [](char byte) { return static_cast<signed char>(byte) < 0; };
    if (std::none_of(text.begin(), text.end(), isBeyondAscii)) {
        return false;
    }
    const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(pieceOf(text));
    for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
        const UChar32 character = characters.char32At(at);
        if (character > 0x7f && u_isdigit(character)) {
            return true;
        }
    }
    return false;
}

/// For numbers with digits of other scripts. Comparing begins behind what two texts have in common
/// and in many languages takes such a digit there for the beginning of a number, not for a part of
/// one: what it then says contradicts itself. The keys are made of whole numbers.
int keyOrder(const icu::Collator& collator, const icu::UnicodeString& first,
             const icu::UnicodeString& second) {
    UErrorCode status = U_ZERO_ERROR;
    icu::CollationKey firstKey;
    icu::CollationKey secondKey;
    collator.getCollationKey(first, firstKey, status);
    collator.getCollationKey(second, secondKey, status);
    return firstKey.compareTo(secondKey, status);
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

bool ignoresCase(std::uint32_t options) {
    return (options & NSCaseInsensitiveSearch) != 0;
}

bool ignoresWidth(std::uint32_t options) {
    return (options & NSWidthInsensitiveSearch) != 0;
}

/// `NSForcedOrderingSearch`: equal only when the bytes are.
int byteOrder(std::string_view first, std::string_view second) {
    return first.compare(second);
}

/// How many bytes the texts have in common up to and including a slash, hyphen or underscore: no
/// collation sees anything that reaches across one, so that what comes behind decides by itself.
std::size_t commonStart(const std::vector<std::string>& texts) {
    std::string_view common = texts.empty() ? std::string_view() : texts.front();
    for (const std::string& text : texts) {
        const auto differing =
            std::mismatch(common.begin(), common.end(), text.begin(), text.end());
        common = common.substr(0, static_cast<std::size_t>(differing.first - common.begin()));
    }
    return common.find_last_of("/-_") + 1;
}

/// Keys, one behind the other: byte strings whose order is that of their texts.
class SortKeys {
public:
    explicit SortKeys(const icu::Collator& collator) : collator_(collator), bytes_(1 << 16) {}

    /// Where the text's key begins; nothing when the collation has none for it.
    std::optional<std::size_t> add(std::string_view text) {
        const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(pieceOf(text));
        std::size_t length = write(characters);
        if (length > room()) {
            bytes_.resize(std::max(bytes_.size() * 2, used_ + length));
            length = write(characters);
        }
        // A key of its own ends with a zero byte.
        if (length == 0 || length > room()) {
            return std::nullopt;
        }
        const std::size_t start = used_;
        used_ += length;
        return start;
    }

    /// The first bytes of a key as a number that orders as they do.
    std::uint64_t head(std::size_t key) const {
        std::uint64_t value = 0;
        bool ended = false;
        for (std::size_t at = 0; at < sizeof value; ++at) {
            ended = ended || bytes_[key + at] == 0;
            value = value << 8 | (ended ? 0 : static_cast<std::uint8_t>(bytes_[key + at]));
        }
        return value;
    }

    int compare(std::size_t first, std::size_t second) const {
        return std::strcmp(bytes_.data() + first, bytes_.data() + second);
    }

private:
    std::size_t room() const { return bytes_.size() - used_; }

    std::size_t write(const icu::UnicodeString& text) {
        constexpr std::size_t limit = std::numeric_limits<std::int32_t>::max();
        const auto length =
            collator_.getSortKey(text, reinterpret_cast<std::uint8_t*>(bytes_.data() + used_),
                                 static_cast<std::int32_t>(std::min(room(), limit)));
        return static_cast<std::size_t>(std::max(length, 0));
    }

    const icu::Collator& collator_;
    std::vector<char> bytes_;
    std::size_t used_ = 0;
};

/// A text by its place in the list, and its key: where that begins, and how.
struct KeyedText {
    /// Beside each other in the list, these mostly decide without a look at the keys themselves.
    std::uint64_t head;
    std::size_t key;
    std::size_t place;
};

std::optional<std::vector<KeyedText>> keyed(const std::vector<std::string>& texts,
                                            std::size_t prefix, SortKeys& keys) {
    std::vector<KeyedText> result;
    result.reserve(texts.size());
    for (const std::string& text : texts) {
        const auto key = keys.add(std::string_view(text).substr(prefix));
        if (!key) {
            return std::nullopt;
        }
        result.push_back({keys.head(*key), *key, result.size()});
    }
    return result;
}

void putInOrder(std::vector<std::string>& texts, const std::vector<KeyedText>& order) {
    std::vector<std::string> sorted;
    sorted.reserve(texts.size());
    for (const KeyedText& text : order) {
        sorted.push_back(std::move(texts[text.place]));
    }
    texts.swap(sorted);
}

/// Whether that could be done; else nothing has changed.
bool sortByKeys(std::vector<std::string>& texts, const icu::Collator& collator, bool forced) {
    SortKeys keys(collator);
    auto order = keyed(texts, commonStart(texts), keys);
    if (!order) {
        return false;
    }
    std::sort(order->begin(), order->end(), [&](const KeyedText& first, const KeyedText& second) {
        if (first.head != second.head) {
            return first.head < second.head;
        }
        int difference = keys.compare(first.key, second.key);
        if (difference == 0 && forced) {
            difference = byteOrder(texts[first.place], texts[second.place]);
        }
        return difference != 0 ? difference < 0 : first.place < second.place;
    });
    putInOrder(texts, *order);
    return true;
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
        UErrorCode status = U_ZERO_ERROR;
        readsFromTheEnd =
            letters[0] && letters[0]->getAttribute(UCOL_FRENCH_COLLATION, status) == UCOL_ON;
    }

    /// The collator for the options; null when there is none.
    const icu::Collator* collatorFor(std::uint32_t options) const {
        const bool numeric = (options & NSNumericSearch) != 0;
        return (ignoresCase(options) && ignoresWidth(options) ? letters : forms)[numeric].get();
    }

    int compare(std::string_view first, std::string_view second, std::uint32_t options) const {
        const bool anyCase = ignoresCase(options);
        const bool anyWidth = ignoresWidth(options);
        const icu::Collator* collator = collatorFor(options);
        if (collator == nullptr) {
            return byteOrder(first, second);
        }
        // The collation's third level holds case and width together: to let only one of them
        // count, the other is taken out of the text.
        const auto read = [&](std::string_view text) {
            return anyCase != anyWidth ? folded(text, anyCase)
                                       : icu::UnicodeString::fromUTF8(pieceOf(text));
        };
        if ((options & NSNumericSearch) != 0 && !readsFromTheEnd &&
            (hasOtherDigit(first) || hasOtherDigit(second))) {
            return keyOrder(*collator, read(first), read(second));
        }
        UErrorCode status = U_ZERO_ERROR;
        if (anyCase != anyWidth) {
            return collator->compare(read(first), read(second), status);
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
    /// Whether the last accent counts first. The keys then say of marks that are parted by
    /// characters without weight what comparing does not say.
    bool readsFromTheEnd = false;
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

void IcuLocale::sort(std::vector<std::string>& texts, std::uint32_t options) const {
    const icu::Collator* collator = collators_->collatorFor(options);
    if (collator == nullptr || collators_->readsFromTheEnd ||
        ignoresCase(options) != ignoresWidth(options) ||
        !sortByKeys(texts, *collator, (options & NSForcedOrderingSearch) != 0)) {
        std::stable_sort(
            texts.begin(), texts.end(), [&](const std::string& first, const std::string& second) {
                return compare(first, second, options, {0, first.size()}) == NSOrderedAscending;
            });
    }
}

} // namespace vistrane
