#include <iostream>
#include <string>
#include <vector>

#include "commandline/EndingSignals.h"
#include "commandline/commands.h"
#include "platform/appkit/NSApplication.h"

namespace vistrane {

int NSApplicationMain(int argc, char** argv) {
    EndingSignals::block();
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const ParsedArguments parsed = parseArguments(arguments);
    if (!parsed.command) {
        std::cerr << "vistrane: " << parsed.error << "\n\n" << helpText();
        return 2;
    }
    return runCommand(*parsed.command);
}

} // namespace vistrane
