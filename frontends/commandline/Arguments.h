#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vistrane {

/// The texts for the interval's three fields (hours, minutes, seconds), as a user would type them.
using IntervalTexts = std::array<std::string, 3>;

/// How to encode a movie.
struct MovieArguments {
    /// 1 to 60, the slider's range.
    int framesPerSecond = 30;
    /// An x264 preset. Empty: the program's default.
    std::string preset;
    /// The constant rate factor, 0 to 51. Nothing: the program's default.
    std::optional<int> rateFactor;
};

struct HelpCommand {};
struct VersionCommand {};

struct WindowCommand {
    /// Nothing: the remembered folder.
    std::optional<std::string> folder;
    bool demoCamera = false;
};

struct DevicesCommand {
    bool demoCamera = false;
};

struct FramesCommand {
    std::string folder;
    bool endsWithNul = false;
};

struct CompileCommand {
    std::string folder;
    MovieArguments movie;
};

struct CaptureCommand {
    std::string folder;
    std::string device;
    /// Nothing: the program's default interval.
    std::optional<IntervalTexts> interval;
    /// The number of frames to save. Nothing: until a signal.
    std::optional<int> count;
    bool compiles = false;
    MovieArguments movie;
    bool demoCamera = false;
};

struct DemoCommand {
    /// Nothing: a new folder in the user's Videos folder.
    std::optional<std::string> folder;
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

/// Splits "H:M:S" at the colons and keeps the parts unchanged. A text without a colon is a number
/// of seconds: its leading integer, as a field reads it, is limited to the longest interval and
/// split into hours, minutes and seconds. If the integer is not positive, the whole text becomes
/// the seconds. Nothing for a text with one colon or more than two.
std::optional<IntervalTexts> parseInterval(const std::string& text);

/// The help text, ending in a newline.
std::string helpText();

} // namespace vistrane
