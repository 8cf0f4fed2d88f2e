#include "backends/icu/IcuDateFormatter.h"

#include <cmath>
#include <cstdint>
#include <ctime>
#include <optional>
#include <utility>

#include <unicode/calendar.h>
#include <unicode/locid.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "backends/icu/user_locale.h"

namespace vistrane {

namespace {

/// The range of ICU's calendars, in milliseconds before and after 1970.
constexpr double farthestMoment = 8.64e15;

double millisecondsOf(NSDate date) {
    const double milliseconds = std::floor(date.timeIntervalSince1970 * 1000.0);
    if (std::isnan(milliseconds)) {
        return 0.0;
    }
    return std::fmin(std::fmax(milliseconds, -farthestMoment), farthestMoment);
}

/// The C library's offset from UTC at that time, in milliseconds.
std::optional<std::int32_t> systemOffset(double milliseconds) {
    const auto moment = static_cast<std::time_t>(std::floor(milliseconds / 1000.0));
    std::tm parts{};
    if (localtime_r(&moment, &parts) == nullptr) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(parts.tm_gmtoff * 1000);
}

std::optional<std::int32_t> offsetInZone(const icu::TimeZone& zone, double milliseconds) {
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone.getOffset(milliseconds, false, raw, saving, status);
    if (U_FAILURE(status) != 0) {
        return std::nullopt;
    }
    return raw + saving;
}

} // namespace

struct IcuDateFormatter::State {
    explicit State(const std::string& icuLocale)
        : locale(icu::Locale::createCanonical(icuLocale.c_str())) {
        tzset();
        zone.reset(icu::TimeZone::detectHostTimeZone());
    }

    void setFormat(const std::string& pattern) {
        UErrorCode status = U_ZERO_ERROR;
        auto made = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern),
                                                            locale, status);
        if (U_FAILURE(status) != 0) {
            made.reset();
        }
        format = std::move(made);
    }

    /// A zone with the C library's offset at that time.
    std::unique_ptr<icu::TimeZone> zoneAt(double milliseconds) const {
        const std::optional<std::int32_t> offset = systemOffset(milliseconds);
        if (!offset || (zone && offsetInZone(*zone, milliseconds) == offset)) {
            return zone ? std::unique_ptr<icu::TimeZone>(zone->clone()) : nullptr;
        }
        return std::make_unique<icu::SimpleTimeZone>(*offset, icu::UnicodeString("UTC"));
    }

    icu::Locale locale;
    std::unique_ptr<icu::TimeZone> zone;
    std::unique_ptr<icu::SimpleDateFormat> format;
};

IcuDateFormatter::IcuDateFormatter() : IcuDateFormatter(userLocale(LocaleCategory::time)) {}

IcuDateFormatter::IcuDateFormatter(const std::string& icuLocale)
    : state_(std::make_unique<State>(icuLocale)) {}

IcuDateFormatter::~IcuDateFormatter() = default;

void IcuDateFormatter::setDateFormat(const std::string& pattern) {
    state_->setFormat(pattern);
}

std::string IcuDateFormatter::stringFromDate(NSDate date) const {
    if (!state_->format) {
        return {};
    }
    const double milliseconds = millisecondsOf(date);
    if (std::unique_ptr<icu::TimeZone> zone = state_->zoneAt(milliseconds)) {
        state_->format->adoptTimeZone(zone.release());
    }
    icu::UnicodeString text;
    state_->format->format(milliseconds, text);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

} // namespace vistrane
