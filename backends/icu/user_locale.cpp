#include "backends/icu/user_locale.h"

#include <cstdlib>
#include <initializer_list>

namespace vistrane {

namespace {

constexpr const char* posixLocale = "en_US_POSIX";

std::string firstSetVariable(std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return {};
}

/// Inserts a script after the language: "sr_RS" with "Latn" gives "sr_Latn_RS".
std::string withScript(const std::string& language, const std::string& script) {
    const std::size_t end = language.find('_');
    if (end == std::string::npos) {
        return language + "_" + script;
    }
    return language.substr(0, end) + "_" + script + language.substr(end);
}

/// Other modifiers, such as a currency, are implied by the locale and dropped.
std::string withModifier(const std::string& language, const std::string& modifier) {
    if (modifier.find('=') != std::string::npos) {
        return language + "@" + modifier;
    }
    if (modifier == "latin") {
        return withScript(language, "Latn");
    }
    if (modifier == "cyrillic") {
        return withScript(language, "Cyrl");
    }
    if (modifier == "devanagari") {
        return withScript(language, "Deva");
    }
    if (modifier == "valencia") {
        return language + "_VALENCIA";
    }
    return language;
}

} // namespace

std::string icuLocaleOfPosixName(const std::string& name) {
    const std::size_t at = name.find('@');
    const std::string modifier = at == std::string::npos ? std::string() : name.substr(at + 1);
    std::string language = name.substr(0, at);
    language = language.substr(0, language.find('.'));
    // For the C library, a name with a slash is the path of a locale file.
    if (language.empty() || language == "C" || language == "POSIX" ||
        language.find('/') != std::string::npos) {
        return posixLocale;
    }
    return withModifier(language, modifier);
}

std::string userLocale(LocaleCategory category) {
    const char* variable = category == LocaleCategory::time ? "LC_TIME" : "LC_COLLATE";
    return icuLocaleOfPosixName(firstSetVariable({"LC_ALL", variable, "LANG"}));
}

} // namespace vistrane
