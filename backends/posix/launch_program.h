#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vistrane {

/// Starts a program from the `PATH` in a new session, with its streams on /dev/null, no other
/// descriptor open, and no signal blocked or ignored. Returns immediately. `ended` is called on
/// another thread with the exit status: 127 for a program that cannot be started, 128 + signal for
/// one that a signal ended.
void launchProgram(std::vector<std::string> command, const std::function<void(int status)>& ended);

} // namespace vistrane
