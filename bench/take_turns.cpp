// Runs two shell commands alternately, ours and the peer's:
//   take_turns [--told] [--memory NAME] TURNS NAME KIND SIZE OURS PEER
//
// Prints a row of wall-clock times in milliseconds, or with --told of the numbers that the commands
// print in their last lines. --memory adds a row of that name for the peak memory, in megabytes.
// The commands' output goes to standard error. If one fails the run ends.

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/measuring.h"

namespace vistrane::bench {

namespace {

struct Run {
    double wall = 0.0;
    double memory = 0.0;
    std::string output;
};

std::string readAll(int file) {
    std::string text;
    char part[4096];
    for (;;) {
        const ssize_t count = read(file, part, sizeof part);
        if (count <= 0) {
            return text;
        }
        text.append(part, static_cast<std::size_t>(count));
    }
}

Run run(const std::string& command) {
    int ends[2];
    require(pipe2(ends, O_CLOEXEC) == 0, "cannot make a pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    char shell[] = "/bin/sh";
    char option[] = "-c";
    std::string text = command;
    char* const arguments[] = {shell, option, text.data(), nullptr};

    Run result;
    const double started = milliseconds();
    pid_t child = 0;
    require(posix_spawn(&child, shell, &actions, nullptr, arguments, environ) == 0,
            "cannot start a process");
    close(ends[1]);
    result.output = readAll(ends[0]);
    int status = 0;
    rusage usage{};
    require(wait4(child, &status, 0, &usage) == child, "cannot wait for a process");
    result.wall = milliseconds() - started;
    result.memory = static_cast<double>(usage.ru_maxrss) / 1024.0;
    close(ends[0]);
    posix_spawn_file_actions_destroy(&actions);
    require(status == 0, "this failed: " + command);
    return result;
}

/// The number in the last line.
double told(const std::string& output) {
    const std::size_t end = output.find_last_not_of('\n');
    require(end != std::string::npos, "a command printed no number");
    const std::size_t before = output.find_last_of('\n', end);
    return std::strtod(output.c_str() + (before == std::string::npos ? 0 : before + 1), nullptr);
}

int takeTurns(std::vector<std::string> arguments) {
    bool isTold = false;
    std::optional<std::string> memoryName;
    while (!arguments.empty() && arguments.front().starts_with("--")) {
        if (arguments.front() == "--told") {
            isTold = true;
        } else if (arguments.front() == "--memory" && arguments.size() > 1) {
            memoryName = arguments[1];
            arguments.erase(arguments.begin());
        }
        arguments.erase(arguments.begin());
    }
    require(arguments.size() == 6, "usage: TURNS NAME KIND SIZE OURS PEER");
    const long count = std::strtol(arguments[0].c_str(), nullptr, 10);
    const Label label{arguments[1], arguments[2], arguments[3]};

    Turns times;
    Turns memory;
    const auto turn = [&](const std::string& command, std::vector<double>& its,
                          std::vector<double>& itsMemory) {
        const Run ended = run(command);
        std::fputs(ended.output.c_str(), stderr);
        its.push_back(isTold ? told(ended.output) : ended.wall);
        itsMemory.push_back(ended.memory);
    };
    for (long i = 0; i < count; ++i) {
        turn(arguments[4], times.ours, memory.ours);
        turn(arguments[5], times.peer, memory.peer);
    }
    printTurns(label, times);
    if (memoryName) {
        printTurns({*memoryName, label.kind, label.size}, memory);
    }
    return 0;
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    return vistrane::bench::takeTurns({arguments + 1, arguments + count});
}
