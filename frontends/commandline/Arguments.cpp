#include "frontends/commandline/Arguments.h"

#include <algorithm>
#include <charconv>
#include <functional>

#include <getopt.h>

#include "core/capture/interval.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

constexpr std::array presets = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                "medium",    "slow",      "slower",   "veryslow", "placebo"};

std::optional<int> parseNumber(const std::string& text, int lowest, int highest) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || at != end || number < lowest || number > highest) {
        return std::nullopt;
    }
    return number;
}

/// One option of a command. `take` gets the value (empty for an option without one) and returns
/// what is wrong with it, or nothing.
struct Option {
    std::string name;
    bool hasValue;
    std::function<std::string(const std::string& value)> take;
};

Option flag(const std::string& name, bool& target) {
    return {name, false, [&target](const std::string&) {
                target = true;
                return std::string();
            }};
}

Option number(const std::string& name, int lowest, int highest,
              const std::function<void(int)>& set) {
    return {name, true, [=](const std::string& value) {
                const auto parsed = parseNumber(value, lowest, highest);
                if (!parsed) {
                    return "--" + name + " takes a whole number from " + std::to_string(lowest) +
                           " to " + std::to_string(highest) + ", not '" + value + "'.";
                }
                set(*parsed);
                return std::string();
            }};
}

std::vector<Option> movieOptions(MovieArguments& movie) {
    return {number("fps", 1, 60, [&movie](int rate) { movie.framesPerSecond = rate; }),
            number("crf", 0, 51, [&movie](int factor) { movie.rateFactor = factor; }),
            {"x264-preset", true, [&movie](const std::string& value) {
                 if (std::find(presets.begin(), presets.end(), value) == presets.end()) {
                     return "--x264-preset takes a preset from ultrafast to placebo, not '" +
                            value + "'.";
                 }
                 movie.preset = value;
                 return std::string();
             }}};
}

/// Hands each option to its taker and the operands to `operands`; returns what is wrong.
std::string readOptions(const std::vector<std::string>& arguments,
                        const std::vector<Option>& options, std::vector<std::string>& operands) {
    std::vector<::option> table;
    for (const Option& each : options) {
        table.push_back(
            {each.name.c_str(), each.hasValue ? required_argument : no_argument, nullptr, 0});
    }
    table.push_back({nullptr, 0, nullptr, 0});

    // The first argument is the command, in the place of a program's name.
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers;
    for (std::string& copy : copies) {
        pointers.push_back(copy.data());
    }
    pointers.push_back(nullptr);
    const int count = static_cast<int>(copies.size());

    ::optind = 0; // starts over, whatever was read before
    // The leading "-" gives operands in their place, whatever the environment says of the order.
    int index = 0;
    for (;;) {
        const int result = ::getopt_long(count, pointers.data(), "-:", table.data(), &index);
        if (result == -1) {
            break;
        }
        if (result == 1) {
            operands.emplace_back(::optarg);
            continue;
        }
        const std::string written = pointers[static_cast<std::size_t>(std::max(::optind - 1, 0))];
        if (result == ':') {
            return written + " needs a value.";
        }
        if (result != 0) {
            return "There is no option '" + written + "' here, or it takes no value.";
        }
        const Option& option = options[static_cast<std::size_t>(index)];
        const bool valueStandsAlone =
            option.hasValue && ::optarg == pointers[static_cast<std::size_t>(::optind - 1)];
        const std::string given =
            pointers[static_cast<std::size_t>(::optind - (valueStandsAlone ? 2 : 1))];
        // The C library takes the beginning of a name for the whole; another version may have
        // another option that begins so.
        if (given.substr(0, given.find('=')) != "--" + option.name) {
            return "There is no option '" + given + "' here.";
        }
        std::string error = option.take(option.hasValue ? ::optarg : "");
        if (!error.empty()) {
            return error;
        }
    }
    for (int at = ::optind; at < count; ++at) {
        operands.emplace_back(pointers[static_cast<std::size_t>(at)]);
    }
    return {};
}

/// Takes the one operand of a command, its folder; returns what is wrong.
std::string takeFolder(const std::vector<std::string>& operands, std::string& folder) {
    if (operands.empty() || operands.front().empty()) {
        return "A folder is missing.";
    }
    if (operands.size() > 1) {
        return "'" + operands[1] + "' is one argument too many.";
    }
    folder = operands.front();
    return {};
}

ParsedArguments result(Command command, const std::string& error) {
    if (!error.empty()) {
        return {std::nullopt, error};
    }
    return {std::move(command), {}};
}

/// A command with a folder: its options, then the folder.
std::string readFolderCommand(const std::vector<std::string>& arguments,
                              const std::vector<Option>& options, std::string& folder) {
    std::vector<std::string> operands;
    const std::string error = readOptions(arguments, options, operands);
    return error.empty() ? takeFolder(operands, folder) : error;
}

ParsedArguments parseDevices(const std::vector<std::string>& arguments) {
    DevicesCommand command;
    std::vector<std::string> operands;
    std::string error = readOptions(arguments, {flag("demo-camera", command.demoCamera)}, operands);
    if (error.empty() && !operands.empty()) {
        error = "'" + operands.front() + "' is one argument too many.";
    }
    return result(command, error);
}

ParsedArguments parseFrames(const std::vector<std::string>& arguments) {
    FramesCommand command;
    const std::string error =
        readFolderCommand(arguments, {flag("null", command.endsWithNul)}, command.folder);
    return result(command, error);
}

ParsedArguments parseCompile(const std::vector<std::string>& arguments) {
    CompileCommand command;
    const std::string error =
        readFolderCommand(arguments, movieOptions(command.movie), command.folder);
    return result(command, error);
}

ParsedArguments parseCapture(const std::vector<std::string>& arguments) {
    CaptureCommand command;
    std::vector<Option> options = movieOptions(command.movie);
    bool movieOptionGiven = false;
    for (Option& option : options) {
        option.take = [take = option.take, &movieOptionGiven](const std::string& value) {
            movieOptionGiven = true;
            return take(value);
        };
    }
    options.push_back(flag("compile", command.compiles));
    options.push_back(flag("demo-camera", command.demoCamera));
    options.push_back(number("count", 1, 1'000'000'000, [&](int n) { command.count = n; }));
    options.push_back({"device", true, [&](const std::string& value) {
                           command.device = value;
                           return std::string();
                       }});
    options.push_back({"interval", true, [&](const std::string& value) {
                           command.interval = parseInterval(value);
                           return command.interval
                                      ? std::string()
                                      : "--interval takes H:M:S or seconds, not '" + value + "'.";
                       }});
    std::string error = readFolderCommand(arguments, options, command.folder);
    if (error.empty() && command.device.empty()) {
        error = "--device is missing; 'vistrane devices' lists the names.";
    }
    if (error.empty() && movieOptionGiven && !command.compiles) {
        error = "--fps, --x264-preset and --crf go with --compile.";
    }
    return result(command, error);
}

/// The window: no command's name stands before its options and its folder.
ParsedArguments parseWindow(const std::vector<std::string>& arguments) {
    std::vector<std::string> named = {"vistrane"};
    named.insert(named.end(), arguments.begin(), arguments.end());
    WindowCommand command;
    std::vector<std::string> operands;
    std::string error = readOptions(named, {flag("demo-camera", command.demoCamera)}, operands);
    if (error.empty() && !operands.empty()) {
        error = takeFolder(operands, command.folder.emplace());
    }
    return result(command, error);
}

ParsedArguments parseDemo(const std::vector<std::string>& arguments) {
    std::vector<std::string> operands;
    std::string error = readOptions(arguments, {}, operands);
    DemoCommand command;
    if (error.empty() && !operands.empty()) {
        error = takeFolder(operands, command.folder.emplace());
    }
    return result(command, error);
}

} // namespace

std::optional<IntervalTexts> parseInterval(const std::string& text) {
    const std::size_t first = text.find(':');
    if (first == std::string::npos) {
        if (integerValue(text) <= 0) {
            return IntervalTexts{"0", "0", text};
        }
        // Before it is split: each field has a limit of its own, and the parts of a longer time
        // within their limits would be another time.
        constexpr std::int64_t longest =
            totalSeconds(highestHours, highestSixtieths, highestSixtieths);
        const std::int64_t seconds = std::min(integerValue(text), longest);
        return IntervalTexts{std::to_string(seconds / 3600), std::to_string(seconds / 60 % 60),
                             std::to_string(seconds % 60)};
    }
    const std::size_t second = text.find(':', first + 1);
    if (second == std::string::npos || text.find(':', second + 1) != std::string::npos) {
        return std::nullopt;
    }
    return IntervalTexts{text.substr(0, first), text.substr(first + 1, second - first - 1),
                         text.substr(second + 1)};
}

ParsedArguments parseArguments(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--") {
            break;
        }
        if (argument == "--help" || argument == "-h") {
            return {HelpCommand{}, {}};
        }
    }
    const std::string name = arguments.empty() ? std::string() : arguments.front();
    if (name == "--version") {
        return arguments.size() == 1 ? ParsedArguments{VersionCommand{}, {}}
                                     : ParsedArguments{std::nullopt, "--version stands alone."};
    }
    if (name == "devices") {
        return parseDevices(arguments);
    }
    if (name == "frames") {
        return parseFrames(arguments);
    }
    if (name == "compile") {
        return parseCompile(arguments);
    }
    if (name == "capture") {
        return parseCapture(arguments);
    }
    if (name == "demo") {
        return parseDemo(arguments);
    }
    return parseWindow(arguments);
}

std::string helpText() {
    return R"(Vistrane makes time-lapse movies from a camera.

Usage:
  vistrane [FOLDER] [--demo-camera]
      Open the window; with a folder, as if it had just been chosen there. A folder that has the
      name of a command is written with its path: ./demo.
  vistrane devices [--demo-camera]
      Print the names of the cameras, one a line.
  vistrane frames FOLDER [--null]
      Print the full paths of the folder's frames in movie order, one a line (--null: each ended
      by a NUL byte instead).
  vistrane compile FOLDER [--fps N] [--x264-preset NAME] [--crf N]
      Make a movie of the folder's frames, in the folder, and print its path. N frames a second,
      1 to 60, 30 unless given.
  vistrane capture FOLDER --device NAME [--interval H:M:S] [--count N]
                   [--compile [--fps N] [--x264-preset NAME] [--crf N]] [--demo-camera]
      Save a still into the folder at once and one every interval, and print each path. The
      interval is given as H:M:S or in seconds, 5 seconds unless given, at most 999:59:59.
      Without --count capturing goes on until it is interrupted, and no movie is made.
  vistrane demo [FOLDER]
      Capture ten stills from the demo camera, one a second, and make a movie of them at 10 frames
      a second; in a new folder in your Videos folder unless one is given. Print the movie's path.
  vistrane --help | --version

--demo-camera offers a built-in test picture under the name "Demo Camera".

Results go to standard output, messages to standard error. Exit status: 0 done, 1 refused or
failed, 2 wrong usage, 130 after an interrupt (129, 143 after a hang-up, a termination).
)";
}

} // namespace vistrane
