#include "backends/sim/CallLog.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "backends/sim/SimRole.h"

namespace vistrane {

void CallLog::record(std::string call) {
    if (!recording_.load(std::memory_order_relaxed)) {
        return;
    }
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
}

void CallLog::recordGetter(std::string call) {
    if (recordsGetters()) {
        record(std::move(call));
    }
}

void CallLog::misuse(std::string what) {
    const std::lock_guard lock(mutex_);
    misuses_.push_back(std::move(what));
}

void CallLog::requireMain(const std::string& what) {
    if (!SimRole::isMain()) {
        misuse(what + ": not on the main thread");
    }
}

std::string CallLog::nextName(const std::string& kind) {
    const std::lock_guard lock(mutex_);
    return kind + std::to_string(++numbers_[kind]);
}

std::vector<std::string> CallLog::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::vector<std::string> CallLog::takeCalls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
}

std::vector<std::string> CallLog::misuses() const {
    const std::lock_guard lock(mutex_);
    return misuses_;
}

std::vector<std::string> CallLog::takeMisuses() {
    const std::lock_guard lock(mutex_);
    return std::exchange(misuses_, {});
}

void SimObject::mainCall(const std::string& text) const {
    log_.requireMain(name_ + " " + text);
    call(text);
}

void SimObject::mainGetter(const std::string& text) const {
    log_.requireMain(name_ + " " + text);
    log_.recordGetter(name_ + " " + text);
}

std::string nameOf(const NSObject* object) {
    if (object == nullptr) {
        return "(null)";
    }
    const auto* named = dynamic_cast<const SimObject*>(object);
    return named == nullptr ? "(other object)" : named->name();
}

std::string decimal(double number) {
    char text[64];
    if (std::fabs(number) < 1e15 && number == std::floor(number)) {
        std::snprintf(text, sizeof text, "%.0f", number);
        return text;
    }
    for (int digits = 1; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, number);
        if (std::strtod(text, nullptr) == number) {
            break;
        }
    }
    return text;
}

std::string yesNo(bool value) {
    return value ? "YES" : "NO";
}

std::string describe(NSPoint point) {
    return decimal(point.x) + "," + decimal(point.y);
}

std::string describe(NSRect rectangle) {
    return describe(rectangle.origin) + "," + decimal(rectangle.size.width) + "," +
           decimal(rectangle.size.height);
}

namespace {

struct DescribeValue {
    std::string operator()(bool value) const { return yesNo(value); }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(std::uint64_t value) const { return std::to_string(value) + "u"; }
    std::string operator()(const std::string& value) const { return value; }
};

} // namespace

std::string describe(const NSDictionary& dictionary) {
    std::string text = "{";
    for (const auto& [key, value] : dictionary) {
        text += text.size() > 1 ? ", " : "";
        text += key + ": " + std::visit(DescribeValue{}, value);
    }
    return text + "}";
}

} // namespace vistrane
