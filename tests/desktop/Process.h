#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vistrane {

/// Changes to the test's own environment; nothing takes a variable away.
using Environment = std::map<std::string, std::optional<std::string>>;

/// A program in the background. All that it writes goes to a file. It ends with this object at the
/// latest, and with the test program however that ends.
class Process {
public:
    /// `descriptor`, if any, is handed down under its own number.
    Process(const std::vector<std::string>& command, const Environment& environment,
            std::string log, int descriptor = -1);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t number() const { return number_; }

    /// How it ended: its status, or the signal's number, negative. Nothing while it runs.
    std::optional<int> status();

    void signal(int number);

    std::string written() const;

private:
    pid_t number_ = -1;
    std::string log_;
    std::optional<int> status_;
};

/// Ends every process that has this entry, "NAME=value", in its environment: also the children
/// that others started and forgot.
void endAllWith(const std::string& entry);

} // namespace vistrane
