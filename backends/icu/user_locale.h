#pragma once

#include <string>

namespace vistrane {

/// The category of the user's locale settings.
enum class LocaleCategory { time, collation };

/// The user's locale as an ICU locale identifier, such as "de_DE" or "sr_Latn_RS".
///
/// Read from the environment by POSIX precedence: LC_ALL, then LC_TIME or LC_COLLATE, then LANG;
/// an empty variable counts as unset. The C library's `setlocale` is not used: it knows only the
/// locales that are installed for it, while ICU has its own. No setting, "C" and "POSIX" give
/// "en_US_POSIX".
std::string userLocale(LocaleCategory category);

/// Converts a POSIX locale name, such as "de_DE.UTF-8@euro", to an ICU identifier. ICU's own
/// keywords ("th_TH@calendar=gregorian") are kept.
std::string icuLocaleOfPosixName(const std::string& name);

} // namespace vistrane
