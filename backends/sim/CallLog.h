#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Every platform call in the order in which it was made, one readable line each, and what was
/// done against an interface's contract. Any thread.
class CallLog {
public:
    CallLog() = default;
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    void record(std::string call);
    /// A plain read: kept only while `recordGetters` is on.
    void recordGetter(std::string call);
    void misuse(std::string what);
    /// A misuse unless the caller stands for the main thread.
    void requireMain(const std::string& what);

    /// "timer1", "timer2", ...: one number series for each kind.
    std::string nextName(const std::string& kind);

    std::vector<std::string> calls() const;
    std::vector<std::string> takeCalls();
    std::vector<std::string> misuses() const;
    std::vector<std::string> takeMisuses();

    void recordGetters(bool wanted) { getters_.store(wanted, std::memory_order_relaxed); }
    bool recordsGetters() const { return getters_.load(std::memory_order_relaxed); }
    /// Off, nothing is recorded and recording orders no threads: for race tests.
    void recordCalls(bool wanted) { recording_.store(wanted, std::memory_order_relaxed); }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::vector<std::string> misuses_;
    std::map<std::string, int> numbers_;
    std::atomic<bool> recording_{true};
    std::atomic<bool> getters_{false};
};

/// A named object of the sim that records what it is told. The log outlives it.
class SimObject {
public:
    const std::string& name() const { return name_; }

protected:
    SimObject(CallLog& log, std::string name) : log_(log), name_(std::move(name)) {}
    ~SimObject() = default;

    void call(const std::string& text) const { log_.record(name_ + " " + text); }
    /// A call that is allowed on the main thread only.
    void mainCall(const std::string& text) const;
    void mainGetter(const std::string& text) const;

    CallLog& log_;

private:
    std::string name_;
};

/// The object's name; "(null)" without an object.
std::string nameOf(const NSObject* object);

/// The shortest decimal digits that give the number back.
std::string decimal(double number);
std::string yesNo(bool value);
std::string describe(NSPoint point);
std::string describe(NSRect rectangle);
/// "{key: value, ...}" in order; unsigned numbers end in "u".
std::string describe(const NSDictionary& dictionary);

} // namespace vistrane
