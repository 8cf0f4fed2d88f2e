#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace vistrane {

/// Longer than any machine needs, with a sanitizer too. Nothing is tested by it: it only ends a
/// test that would never end.
inline constexpr std::chrono::seconds patience{60};

/// The other side cannot answer at the moment, because it is being built or taken down.
class Unanswered : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Something that was waited for did not come.
class Overdue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Asks `condition` again and again until its answer holds, and returns that answer.
template <typename Condition>
auto await(const std::string& what, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
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
            throw Overdue("Waited in vain for " + what + reason);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace vistrane
