#include "backends/posix/settings_text.h"

#include <charconv>
#include <optional>

namespace vistrane {

namespace {

constexpr std::string_view firstLine = "Vistrane settings 1";
constexpr std::string_view lastLine = "end";
constexpr std::string_view hexadecimalDigits = "0123456789abcdef";

void appendByte(std::string& text, unsigned char byte) {
    text += hexadecimalDigits[byte >> 4U];
    text += hexadecimalDigits[byte & 15U];
}

std::string quoted(const std::string& value) {
    std::string text = "\"";
    for (const char each : value) {
        if (each >= ' ' && each <= '~' && each != '"' && each != '\\') {
            text += each;
        } else {
            text += '\\';
            appendByte(text, static_cast<unsigned char>(each));
        }
    }
    return text + "\"";
}

std::string valueText(const std::vector<std::uint8_t>& value) {
    std::string text = "<";
    for (const std::uint8_t each : value) {
        if (text.size() > 1) {
            text += ' ';
        }
        appendByte(text, each);
    }
    return text + ">";
}

std::string valueText(std::int64_t value) {
    return std::to_string(value);
}

std::string valueText(const std::string& value) {
    return quoted(value);
}

std::optional<unsigned char> digit(char character) {
    const std::size_t value = hexadecimalDigits.find(character);
    if (value == std::string_view::npos) {
        return std::nullopt;
    }
    return static_cast<unsigned char>(value);
}

/// Takes one thing after the other from the front of a line. What does not fit is nothing.
class Line {
public:
    explicit Line(std::string_view text) : rest_(text) {}

    bool isAtEnd() const { return rest_.empty(); }

    bool skip(std::string_view text) {
        if (rest_.substr(0, text.size()) != text) {
            return false;
        }
        rest_.remove_prefix(text.size());
        return true;
    }

    std::optional<std::string> takeQuoted() {
        std::string value;
        if (!skip("\"")) {
            return std::nullopt;
        }
        while (!skip("\"")) {
            const bool isEscape = skip("\\");
            const auto byte = isEscape ? takeByte() : takePlain();
            if (!byte) {
                return std::nullopt;
            }
            value += static_cast<char>(*byte);
        }
        return value;
    }

    std::optional<std::vector<std::uint8_t>> takeBytes() {
        std::vector<std::uint8_t> value;
        if (!skip("<")) {
            return std::nullopt;
        }
        while (!skip(">")) {
            if (!value.empty() && !skip(" ")) {
                return std::nullopt;
            }
            const auto byte = takeByte();
            if (!byte) {
                return std::nullopt;
            }
            value.push_back(*byte);
        }
        return value;
    }

    std::optional<std::int64_t> takeInteger() {
        std::int64_t value = 0;
        const char* const end = rest_.data() + rest_.size();
        const auto [at, error] = std::from_chars(rest_.data(), end, value);
        if (error != std::errc()) {
            return std::nullopt;
        }
        rest_.remove_prefix(static_cast<std::size_t>(at - rest_.data()));
        return value;
    }

private:
    std::optional<unsigned char> takePlain() {
        if (rest_.empty() || rest_.front() < ' ' || rest_.front() > '~') {
            return std::nullopt;
        }
        const auto byte = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return byte;
    }

    std::optional<unsigned char> takeByte() {
        if (rest_.size() < 2) {
            return std::nullopt;
        }
        const auto high = digit(rest_[0]);
        const auto low = digit(rest_[1]);
        if (!high || !low) {
            return std::nullopt;
        }
        rest_.remove_prefix(2);
        return static_cast<unsigned char>(*high << 4U | *low);
    }

    std::string_view rest_;
};

std::optional<SettingsValue> takeValue(Line& line) {
    if (auto text = line.takeQuoted()) {
        return SettingsValue(std::move(*text));
    }
    if (auto bytes = line.takeBytes()) {
        return SettingsValue(std::move(*bytes));
    }
    if (const auto number = line.takeInteger()) {
        return SettingsValue(*number);
    }
    return std::nullopt;
}

bool readSetting(std::string_view text, Settings& settings) {
    Line line(text);
    const auto key = line.takeQuoted();
    if (!key || !line.skip(" = ")) {
        return false;
    }
    auto value = takeValue(line);
    return value && line.isAtEnd() && settings.emplace(*key, std::move(*value)).second;
}

} // namespace

std::string settingsText(const Settings& settings) {
    std::string text = std::string(firstLine) + "\n";
    for (const auto& [key, value] : settings) {
        text += quoted(key) + " = ";
        text += std::visit([](const auto& each) { return valueText(each); }, value) + "\n";
    }
    return text + std::string(lastLine) + "\n";
}

SettingsResult parseSettings(std::string_view text) {
    SettingsResult result;
    bool hasEnded = false;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        const bool isWhole = end != std::string_view::npos && !hasEnded;
        hasEnded = isWhole && line == lastLine;
        const bool isGood =
            number == 1 ? line == firstLine : hasEnded || readSetting(line, result.settings);
        if (!isWhole || !isGood) {
            return {{}, "line " + std::to_string(number) + " cannot be understood"};
        }
        text.remove_prefix(end + 1);
    }
    if (!hasEnded) {
        return {{}, "its end is missing"};
    }
    return result;
}

} // namespace vistrane
