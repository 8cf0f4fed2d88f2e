#pragma once

#include "frontends/commandline/Arguments.h"

namespace vistrane {

/// Runs a command. Returns the exit status, or ends the process itself.
int runCommand(const Command& command);

} // namespace vistrane
