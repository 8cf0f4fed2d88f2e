#include "backends/sim/CallLog.h"

#include <charconv>
#include <variant>

#include "backends/sim/SimThreads.h"

namespace vistrane {

std::string nameOf(const NSObject* object) {
    if (object == nullptr) {
        return "(null)";
    }
    const auto* named = dynamic_cast<const SimObject*>(object);
    return named == nullptr ? "(other object)" : named->name();
}

std::string text(double value) {
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    return {digits, end};
}

std::string text(NSPoint point) {
    return filled("%,%", {text(point.x), text(point.y)});
}

std::string text(NSRect rectangle) {
    return filled(
        "%,%,%", {text(rectangle.origin), text(rectangle.size.width), text(rectangle.size.height)});
}

std::string text(const NSDictionary& dictionary) {
    std::string all;
    for (const auto& [key, value] : dictionary) {
        const bool isUnsigned = std::holds_alternative<std::uint64_t>(value);
        all += (all.empty() ? "" : ", ") + key + ": " +
               std::visit([](const auto& held) { return text(held); }, value) +
               (isUnsigned ? "u" : "");
    }
    return "{" + all + "}";
}

std::string filled(std::string_view pattern, std::initializer_list<std::string> parts) {
    std::string line;
    const auto* part = parts.begin();
    for (const char character : pattern) {
        if (character == '%' && part != parts.end()) {
            line += *part++;
        } else {
            line += character;
        }
    }
    return line;
}

void CallLog::requireMain(const std::string& what) {
    if (!SimRole::isMain()) {
        misuse(what + ": not on the main thread");
    }
}

} // namespace vistrane
