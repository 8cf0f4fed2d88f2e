#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "backends/posix/EndingSignals.h"
#include "backends/posix/free_memory.h"
#include "frontends/commandline/commands.h"
#include "platform/appkit/NSApplication.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// Opens /dev/null for each standard stream that is closed. Otherwise a file that is opened later
/// would get the stream's number, and output would go into that file. /dev/null is opened for
/// reading, so that writing fails as on a closed stream.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) == -1) {
            ::open("/dev/null", O_RDONLY);
        }
    }
}

/// Each restart of PipeWire takes descriptors for good, and libraries crash when there are none
/// left. Not more than this, because some libraries still use `select` or visit every number.
void raiseDescriptorLimit() {
    constexpr rlim_t enough = 4096;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < enough) {
        limit.rlim_cur = std::min(enough, limit.rlim_max);
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

int NSApplicationMain(int argc, char** argv) {
    occupyStandardStreams();
    raiseDescriptorLimit();
    useOneArena();
    EndingSignals::block();
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const ParsedArguments parsed = parseArguments(arguments);
    if (!parsed.command) {
        std::cerr << "vistrane: " << shownText(parsed.error)
                  << " 'vistrane --help' tells the usage.\n";
        return 2;
    }
    return runCommand(*parsed.command);
}

} // namespace vistrane
