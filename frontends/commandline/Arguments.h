#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vistrane {

/// The texts of the interval's three fields, as a user would type them.
using IntervalTexts = std::array<std::string, 3>;

/// How a movie is made. Rate: 1 to 60 frames a second, the slider's range.
struct MovieArguments {
    int framesPerSecond = 30;
    /// An x264 preset; empty for the program's own choice.
    std::string preset;
    /// Constant rate factor, 0 to 51; nothing for the program's own choice.
    std::optional<int> rateFactor;
};

struct HelpCommand {};
struct VersionCommand {};

struct WindowCommand {
    /// Nothing: the folder of the last time.
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
    /// Nothing: the interface's own interval.
    std::optional<IntervalTexts> interval;
    /// Frames to save; nothing: until a signal.
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

/// What the arguments ask for, or what is wrong with them.
struct ParsedArguments {
    std::optional<Command> command;
    std::string error;
};

/// Reads the arguments after the program's name. The first one is a command if there is one of that
/// name, else a folder for the window, or an option of the window. Options may stand anywhere after
/// the command, as "--name value" or "--name=value"; "--" ends them.
ParsedArguments parseArguments(const std::vector<std::string>& arguments);

/// "H:M:S" gives the three fields' texts as they stand. A text without a colon is read as a field
/// reads it, by its leading integer: seconds, which are split into hours, minutes and seconds, at
/// most the longest interval. One that is not above 0 goes into the seconds field as it stands.
/// Nothing for a text with one colon or more than two.
std::optional<IntervalTexts> parseInterval(const std::string& text);

/// The help text, ending in a newline.
std::string helpText();

} // namespace vistrane
