#pragma once

#include <array>
#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vistrane {

/// The texts for the interval's three fields (hours, minutes, seconds).
using IntervalTexts = std::array<std::string, 3>;

/// What a command says on standard error: warnings and errors always.
enum class Verbosity {
    /// Nothing else.
    quiet,
    /// And what was done, with the progress on a terminal.
    usual,
    /// And the log lines.
    verbose,
};

/// How to encode a movie.
struct MovieArguments {
    /// 1 to 60, the slider's range.
    int framesPerSecond = 30;
    /// An x264 preset. Empty: the program's default.
    std::string preset;
    /// The constant rate factor, 0 to 51. Nothing: the program's default.
    std::optional<int> rateFactor;
    /// The movie's file. Empty: in the project folder, named by the time.
    std::string output;
    /// Whether `output` may be an existing file.
    bool replaces = false;
};

struct HelpCommand {
    /// A command's name; empty for all commands.
    std::string topic;
};
struct VersionCommand {};

struct WindowCommand {
    /// Nothing: the remembered folder.
    std::optional<std::string> folder;
    bool demoCamera = false;
    bool demoBars = false;
};

struct DevicesCommand {
    bool demoCamera = false;
    bool demoBars = false;
    bool isJson = false;
    Verbosity verbosity = Verbosity::usual;
};

struct FramesCommand {
    std::string folder;
    bool endsWithNul = false;
    bool isJson = false;
    Verbosity verbosity = Verbosity::usual;
};

struct CompileCommand {
    std::string folder;
    MovieArguments movie;
    bool isJson = false;
    Verbosity verbosity = Verbosity::usual;
};

/// When a capture ends. Without any of these, at a signal.
struct CaptureEnd {
    /// The number of frames to save.
    std::optional<int> count;
    /// The time from the first still on, greater than zero.
    std::optional<std::chrono::seconds> duration;
    /// A moment of the local time.
    std::optional<std::time_t> until;
};

struct CaptureCommand {
    std::string folder;
    std::string device;
    /// Nothing: the program's default interval.
    std::optional<IntervalTexts> interval;
    CaptureEnd end;
    /// Whether to make the folder if it does not exist.
    bool createsFolder = false;
    bool compiles = false;
    MovieArguments movie;
    bool demoCamera = false;
    bool demoBars = false;
    Verbosity verbosity = Verbosity::usual;
};

struct DemoCommand {
    /// Nothing: a new folder in the user's Videos folder.
    std::optional<std::string> folder;
    /// `output` and `replaces` only.
    MovieArguments movie;
    Verbosity verbosity = Verbosity::usual;
};

using Command = std::variant<HelpCommand, VersionCommand, WindowCommand, DevicesCommand,
                             FramesCommand, CompileCommand, CaptureCommand, DemoCommand>;

/// The command, or what is wrong with the arguments.
struct ParsedArguments {
    std::optional<Command> command;
    std::string error;
};

/// Parses the arguments that follow the program's name. If the first one is not the name of a
/// command, all of them are options and the folder of the window. Options may come in any order and
/// between operands, as "--name value" or "--name=value". "--" ends the options. Of an option that
/// is given twice, the last value counts.
ParsedArguments parseArguments(const std::vector<std::string>& arguments);

/// The fields for an interval as `parseDuration` reads it. Nothing for any other text and for an
/// interval below 1 s or above 999:59:59, which the fields would change.
std::optional<IntervalTexts> parseInterval(const std::string& text);

/// The help text for a command, or for all if the topic is empty. Ends in a newline. Empty if
/// there is no such command.
std::string helpText(const std::string& topic = {});

/// The command whose name differs from `word` by one or two typing mistakes, or an empty string.
std::string similarCommand(const std::string& word);

} // namespace vistrane
