#include "backends/posix/SystemProcessInfo.h"

#include <fstream>
#include <utility>

#include <sys/utsname.h>

namespace vistrane {

namespace {

/// The value as a shell reads it: unquoted and unescaped.
std::string unquoted(const std::string& value) {
    std::string text;
    char quote = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
            text += value[++i];
        } else if (quote == 0 ? c == '"' || c == '\'' : c == quote) {
            quote = quote == 0 ? c : static_cast<char>(0);
        } else {
            text += c;
        }
    }
    return text;
}

std::string kernelVersion() {
    utsname names{};
    return uname(&names) == 0 ? std::string(names.sysname) + " " + names.release : "unknown";
}

} // namespace

SystemProcessInfo::SystemProcessInfo(std::string osRelease) : osRelease_(std::move(osRelease)) {}

std::string SystemProcessInfo::operatingSystemVersionString() const {
    const std::string key = "PRETTY_NAME=";
    std::ifstream file(osRelease_);
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, key.size(), key) == 0) {
            if (std::string name = unquoted(line.substr(key.size())); !name.empty()) {
                return name;
            }
        }
    }
    return kernelVersion();
}

} // namespace vistrane
