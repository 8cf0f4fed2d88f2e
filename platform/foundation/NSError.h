#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vistrane {

/// Why an operation failed. Expected failures are values, never exceptions.
struct NSError {
    /// The family of codes, such as "NSPOSIXErrorDomain".
    std::string domain;
    std::int64_t code = 0;
    /// For users: what failed, where, and what to do about it. One line.
    std::string localizedDescription;

    /// For the log: domain, code and text.
    std::string description() const {
        return "Error Domain=" + domain + " Code=" + std::to_string(code) + " \"" +
               localizedDescription + "\"";
    }

    bool operator==(const NSError&) const = default;
};

/// The text for "%@". The error may be missing.
inline std::string describe(const std::optional<NSError>& error) {
    return error ? error->description() : "(null)";
}

} // namespace vistrane
