#include "backends/sim/SimLocale.h"

#include <algorithm>
#include <string_view>

namespace vistrane {

namespace {

/// Reads a string in units: code points, or digit runs where numbers count.
class Reader {
public:
    Reader(std::string_view text, std::uint32_t options) : text_(text), options_(options) {}

    bool atEnd() const { return text_.empty(); }

    /// The next character as the options see it, without taking it.
    std::uint32_t peek() const { return next().code; }
    bool atNumber() const {
        return (options_ & NSNumericSearch) != 0 && !atEnd() && isDigit(peek());
    }

    std::uint32_t take() {
        const Unit unit = next();
        text_.remove_prefix(unit.length);
        return unit.code;
    }

    /// A digit run without leading zeros.
    std::string takeNumber() {
        std::string digits;
        while (!atEnd() && isDigit(peek())) {
            digits += static_cast<char>(take());
        }
        const std::size_t first = digits.find_first_not_of('0');
        return first == std::string::npos ? std::string() : digits.substr(first);
    }

private:
    struct Unit {
        std::uint32_t code;
        std::size_t length;
    };

    static bool isDigit(std::uint32_t code) { return code >= '0' && code <= '9'; }

    std::uint32_t byte(std::size_t at) const { return static_cast<unsigned char>(text_[at]); }

    Unit next() const {
        Unit unit{byte(0), 1};
        // U+FF01 to U+FF5E, the full width forms of ASCII. All other bytes stand for themselves:
        // the order of UTF-8 bytes is that of the code points.
        if ((options_ & NSWidthInsensitiveSearch) != 0 && text_.size() >= 3 && byte(0) == 0xEF) {
            const std::uint32_t code = 0xF000 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
            if (code >= 0xFF01 && code <= 0xFF5E) {
                unit = {code - 0xFEE0, 3};
            }
        }
        if ((options_ & NSCaseInsensitiveSearch) != 0 && unit.code >= 'A' && unit.code <= 'Z') {
            unit.code += 'a' - 'A';
        }
        return unit;
    }

    std::string_view text_;
    std::uint32_t options_;
};

template <class T>
NSComparisonResult order(const T& first, const T& second) {
    if (first < second) {
        return NSOrderedAscending;
    }
    return second < first ? NSOrderedDescending : NSOrderedSame;
}

NSComparisonResult orderNumbers(const std::string& first, const std::string& second) {
    const NSComparisonResult bySize = order(first.size(), second.size());
    return bySize == NSOrderedSame ? order(first, second) : bySize;
}

NSComparisonResult orderTexts(Reader first, Reader second) {
    while (!first.atEnd() && !second.atEnd()) {
        const NSComparisonResult result =
            first.atNumber() && second.atNumber()
                ? orderNumbers(first.takeNumber(), second.takeNumber())
                : order(first.take(), second.take());
        if (result != NSOrderedSame) {
            return result;
        }
    }
    return order(second.atEnd(), first.atEnd());
}

} // namespace

NSComparisonResult SimLocale::compare(const std::string& first, const std::string& second,
                                      std::uint32_t options, NSRange range) const {
    if (log_.recordsGetters()) {
        call("compare: " + first + " with: " + second + " options: " + std::to_string(options) +
             " range: " + std::to_string(range.location) + "," + std::to_string(range.length));
    }
    // The part of the range that lies in the string.
    const std::string_view part =
        std::string_view(first).substr(std::min(range.location, first.size()), range.length);
    const NSComparisonResult result = orderTexts(Reader(part, options), Reader(second, options));
    if (result == NSOrderedSame && (options & NSForcedOrderingSearch) != 0) {
        return order(part, std::string_view(second));
    }
    return result;
}

void SimLocale::sort(std::vector<std::string>& texts, std::uint32_t options) const {
    std::stable_sort(
        texts.begin(), texts.end(), [&](const std::string& first, const std::string& second) {
            return compare(first, second, options, {0, first.size()}) == NSOrderedAscending;
        });
}

} // namespace vistrane
