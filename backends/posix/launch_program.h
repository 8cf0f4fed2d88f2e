#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vistrane {

/// Starts a program, found on the `PATH`, in a session of its own, with nothing of ours: no
/// streams, no blocked signals. Returns at once; `ended` is called on another thread with the exit
/// status, 127 for a program that cannot be started, or 128 and the signal that ended it.
void launchProgram(std::vector<std::string> command, const std::function<void(int status)>& ended);

} // namespace vistrane
