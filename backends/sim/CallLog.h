#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The object's name in the log; "(null)" without an object.
std::string nameOf(const NSObject* object);

// How the log writes a value.
inline std::string text(const std::string& value) {
    return value;
}
/// The shortest decimal digits that round-trip.
std::string text(double value);
std::string text(NSPoint point);
std::string text(NSRect rectangle);
/// "{key: value, ...}" in order; unsigned numbers end in "u".
std::string text(const NSDictionary& dictionary);
/// A flag as "YES" or "NO", another integer in decimal digits.
template <std::integral Integer>
std::string text(Integer value) {
    if constexpr (std::is_same_v<Integer, bool>) {
        return value ? "YES" : "NO";
    } else {
        return std::to_string(value);
    }
}
template <class Object>
std::string text(const std::shared_ptr<Object>& object) {
    return nameOf(object.get());
}

/// `pattern` with each "%" replaced by the next part.
std::string filled(std::string_view pattern, std::initializer_list<std::string> parts);

/// Every platform call in the order in which it was made, one readable line each, and every breach
/// of an interface's contract ("misuse"). Any thread.
class CallLog {
public:
    CallLog() = default;
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    /// Each "%" of the pattern is replaced by the text of the next value.
    template <class... Values>
    void record(std::string_view pattern, const Values&... values) {
        if (recording_.load(std::memory_order_relaxed)) {
            append(filled(pattern, {text(values)...}));
        }
    }
    /// As `record`, for a call that is allowed on the main thread only.
    template <class... Values>
    void recordOnMain(std::string_view pattern, const Values&... values) {
        requireMain(filled(pattern, {text(values)...}));
        record(pattern, values...);
    }
    void misuse(std::string what) {
        const std::lock_guard lock(mutex_);
        misuses_.push_back(std::move(what));
    }
    /// A misuse unless the caller runs as the main thread.
    void requireMain(const std::string& what);

    /// "timer1", "timer2", ...: one series of numbers for each kind.
    std::string nextName(const std::string& kind) {
        const std::lock_guard lock(mutex_);
        return kind + std::to_string(++numbers_[kind]);
    }

    std::vector<std::string> calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    /// Returns the calls so far and forgets them.
    std::vector<std::string> takeCalls() {
        const std::lock_guard lock(mutex_);
        return std::exchange(calls_, {});
    }
    std::vector<std::string> misuses() const {
        const std::lock_guard lock(mutex_);
        return misuses_;
    }

    /// Off: nothing is recorded, and recording orders no two threads. For race tests.
    void recordCalls(bool wanted) { recording_.store(wanted, std::memory_order_relaxed); }

private:
    void append(std::string call) {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::vector<std::string> misuses_;
    std::map<std::string, int> numbers_;
    std::atomic<bool> recording_{true};
};

/// A named object that records the messages it gets. The log outlives it.
class SimObject {
public:
    const std::string& name() const { return name_; }

protected:
    SimObject(CallLog& log, std::string name) : log_(log), name_(std::move(name)) {}
    ~SimObject() = default;

    template <class... Values>
    void call(std::string_view pattern, const Values&... values) const {
        log_.record("% " + std::string(pattern), name_, values...);
    }
    /// As `call`, for a message that is allowed on the main thread only.
    template <class... Values>
    void mainCall(std::string_view pattern, const Values&... values) const {
        log_.recordOnMain("% " + std::string(pattern), name_, values...);
    }
    /// A read on the main thread: checked, not recorded.
    template <class Value>
    const Value& read(const char* message, const Value& value) const {
        requireMain(message);
        return value;
    }
    void requireMain(const std::string& message) const { log_.requireMain(name_ + " " + message); }
    /// A setter: records the message and its value, and stores the value.
    template <class Value, class Given>
    void set(const char* message, Value& field, Given value) const {
        call(std::string(message) + " %", value);
        field = std::move(value);
    }
    /// As `set`, on the main thread only.
    template <class Value, class Given>
    void mainSet(const char* message, Value& field, Given value) const {
        requireMain(std::string(message) + " " + text(value));
        set(message, field, std::move(value));
    }

    CallLog& log_;

private:
    std::string name_;
};

/// An object of interface `Base`.
template <class Base>
class SimOf : public Base, public SimObject {
public:
    SimOf(CallLog& log, std::string name) : SimObject(log, std::move(name)) {}
};

} // namespace vistrane
