#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace vistrane {

/// Ends a test that would never end. No test depends on it otherwise.
inline constexpr std::chrono::seconds timeout{60};

/// The other side cannot answer at the moment, because it is being built or taken down.
class Unanswered : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Something did not happen within the timeout.
class TimedOut : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Polls `condition` until its answer converts to true, and returns that answer.
template <typename Condition>
auto await(const std::string& what, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    std::string reason;
    while (true) {
        try {
            if (auto answer = condition()) {
                return answer;
            }
            reason.clear();
        } catch (const Unanswered& unanswered) {
            reason = std::string(" (") + unanswered.what() + ")";
        }
        if (std::chrono::steady_clock::now() > end) {
            throw TimedOut("Timed out waiting for " + what + reason);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace vistrane
