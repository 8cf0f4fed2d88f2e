#pragma once

#include "frontends/commandline/Arguments.h"

namespace vistrane {

/// Carries a command out and returns the exit status; may end the process itself.
int runCommand(const Command& command);

} // namespace vistrane
