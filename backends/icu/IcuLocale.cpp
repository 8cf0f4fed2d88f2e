#include "backends/icu/IcuLocale.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/sortkey.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "backends/icu/user_locale.h"

namespace vistrane {

namespace {

/// The POSIX locale sorts all capitals before all small letters, which suits no language. The rules
/// of ICU's root locale replace it.
icu::Locale collationLocale(const std::string& icuLocale) {
    return icuLocale == "en_US_POSIX" ? icu::Locale::getRoot()
                                      : icu::Locale::createCanonical(icuLocale.c_str());
}

std::unique_ptr<const icu::Collator> makeCollator(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status) != 0) {
        return nullptr;
    }
    // Letters and accents count; case and width, the third level, do not.
    collator->setStrength(icu::Collator::SECONDARY);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    // Some locales ignore punctuation by default, so that "a-b" would equal "ab".
    collator->setAttribute(UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, status);
    // Some file systems store names decomposed, others composed.
    collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
    return U_FAILURE(status) != 0 ? nullptr : std::move(collator);
}

icu::StringPiece pieceOf(std::string_view bytes) {
    constexpr std::size_t limit = std::numeric_limits<std::int32_t>::max();
    return {bytes.data(), static_cast<std::int32_t>(std::min(bytes.size(), limit))};
}

icu::UnicodeString charactersOf(std::string_view bytes) {
    return icu::UnicodeString::fromUTF8(pieceOf(bytes));
}

bool hasDigitBeyondAscii(std::string_view text) {
    const auto isBeyondAscii = [](char byte) { return static_cast<signed char>(byte) < 0; };
    if (std::none_of(text.begin(), text.end(), isBeyondAscii)) {
        return false;
    }
    const icu::UnicodeString characters = charactersOf(text);
    for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
        const UChar32 character = characters.char32At(at);
        if (character > 0x7f && u_isdigit(character)) {
            return true;
        }
    }
    return false;
}

int keyOrder(const icu::Collator& collator, std::string_view first, std::string_view second) {
    UErrorCode status = U_ZERO_ERROR;
    icu::CollationKey firstKey;
    icu::CollationKey secondKey;
    collator.getCollationKey(charactersOf(first), firstKey, status);
    collator.getCollationKey(charactersOf(second), secondKey, status);
    return firstKey.compareTo(secondKey, status);
}

NSComparisonResult resultOf(int difference) {
    if (difference == 0) {
        return NSOrderedSame;
    }
    return difference < 0 ? NSOrderedAscending : NSOrderedDescending;
}

/// The length of the common prefix of all texts that ends in a slash, hyphen or underscore. No
/// collation has a rule that spans one of these, so comparing the rests gives the same order.
std::size_t commonPrefixLength(const std::vector<std::string>& texts) {
    std::string_view common = texts.empty() ? std::string_view() : texts.front();
    for (const std::string& text : texts) {
        const auto differing =
            std::mismatch(common.begin(), common.end(), text.begin(), text.end());
        common = common.substr(0, static_cast<std::size_t>(differing.first - common.begin()));
    }
    return common.find_last_of("/-_") + 1;
}

/// Collation keys in one buffer: byte strings that sort like their texts.
class SortKeys {
public:
    explicit SortKeys(const icu::Collator& collator) : collator_(collator), bytes_(1 << 16) {}

    /// Returns the position of the text's key; nothing if the collation has no key for it.
    std::optional<std::size_t> add(std::string_view text) {
        const icu::UnicodeString characters = charactersOf(text);
        std::size_t length = write(characters);
        if (length > room()) {
            bytes_.resize(std::max(bytes_.size() * 2, used_ + length));
            length = write(characters);
        }
        // Every key ends with a zero byte.
        if (length == 0 || length > room()) {
            return std::nullopt;
        }
        const std::size_t start = used_;
        used_ += length;
        return start;
    }

    /// The first bytes of a key, as a number that sorts like them.
    std::uint64_t start(std::size_t key) const {
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

struct KeyedText {
    /// The key's first bytes. They decide most comparisons without reading the key.
    std::uint64_t start;
    std::size_t key;
    /// The text's index in the list.
    std::size_t text;
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
        result.push_back({keys.start(*key), *key, result.size()});
    }
    return result;
}

/// Returns false, and changes nothing, if a text has no key.
bool sortByKeys(std::vector<std::string>& texts, const icu::Collator& collator) {
    SortKeys keys(collator);
    auto order = keyed(texts, commonPrefixLength(texts), keys);
    if (!order) {
        return false;
    }
    std::sort(order->begin(), order->end(), [&](const KeyedText& first, const KeyedText& second) {
        if (first.start != second.start) {
            return first.start < second.start;
        }
        const int difference = keys.compare(first.key, second.key);
        return difference != 0 ? difference < 0 : texts[first.text] < texts[second.text];
    });
    std::vector<std::string> sorted;
    sorted.reserve(texts.size());
    for (const KeyedText& each : *order) {
        sorted.push_back(std::move(texts[each.text]));
    }
    texts.swap(sorted);
    return true;
}

} // namespace

struct IcuLocale::Collation {
    explicit Collation(const icu::Locale& locale) : collator(makeCollator(locale)) {
        UErrorCode status = U_ZERO_ERROR;
        comparesAccentsFromEnd =
            collator && collator->getAttribute(UCOL_FRENCH_COLLATION, status) == UCOL_ON;
    }

    /// Zero for texts that are equal by the collation.
    int compare(std::string_view first, std::string_view second) const {
        if (!collator) {
            return 0;
        }
        // ICU skips the common prefix of two texts. In many languages it then reads a digit of
        // another script in the middle of a number as the start of one, and contradicts itself.
        // Keys are made from whole numbers.
        if (!comparesAccentsFromEnd &&
            (hasDigitBeyondAscii(first) || hasDigitBeyondAscii(second))) {
            return keyOrder(*collator, first, second);
        }
        UErrorCode status = U_ZERO_ERROR;
        return collator->compareUTF8(pieceOf(first), pieceOf(second), status);
    }

    /// Null if ICU has none; texts are then sorted by their bytes.
    std::unique_ptr<const icu::Collator> collator;
    /// Whether accents are compared from the end. Keys and comparisons then disagree about accents
    /// that are separated by ignored characters, so keys are not used.
    bool comparesAccentsFromEnd = false;
};

IcuLocale::IcuLocale() : IcuLocale(userLocale(LocaleCategory::collation)) {}

IcuLocale::IcuLocale(const std::string& icuLocale)
    : collation_(std::make_unique<const Collation>(collationLocale(icuLocale))) {}

IcuLocale::~IcuLocale() = default;

NSComparisonResult IcuLocale::compare(const std::string& first, const std::string& second,
                                      std::uint32_t, NSRange range) const {
    const auto compared =
        std::string_view(first).substr(std::min(range.location, first.size()), range.length);
    const int difference = collation_->compare(compared, second);
    return resultOf(difference != 0 ? difference : compared.compare(second));
}

void IcuLocale::sort(std::vector<std::string>& texts, std::uint32_t options) const {
    if (!collation_->collator || collation_->comparesAccentsFromEnd ||
        !sortByKeys(texts, *collation_->collator)) {
        std::sort(texts.begin(), texts.end(),
                  [&](const std::string& first, const std::string& second) {
                      return compare(first, second, options, {0, first.size()}) < 0;
                  });
    }
}

} // namespace vistrane
