#include "frontends/commandline/Arguments.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "core/capture/interval.h"
#include "platform/foundation/NSString.h"

// CLI11 parses the options. This is the only file that includes it, because it is slow to compile.
// It does not parse commands, because "vistrane --demo-camera frames" must open the window with the
// folder "frames". It does not convert numbers, because it reads "010" as 8. It does not handle
// operands, because it would accept "-5" as one.

namespace vistrane {

namespace {

constexpr std::array presets = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                "medium",    "slow",      "slower",   "veryslow", "placebo"};

/// Says what is wrong with the arguments. Not derived from CLI11's errors, because CLI11 would
/// change its text.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Adds an option with a value. Calls `take` with the value of each occurrence, in order. It throws
/// a `UsageError` if the value is wrong.
CLI::Option* addOption(CLI::App& app, const std::string& name,
                       const std::function<void(const std::string& value)>& take) {
    return app.add_option(name)->take_last()->each(take);
}

void addNumber(CLI::App& app, const std::string& name, int lowest, int highest,
               const std::function<void(int)>& set) {
    addOption(app, name, [=](const std::string& value) {
        int number = 0;
        const char* const end = value.data() + value.size();
        const auto [at, error] = std::from_chars(value.data(), end, number);
        if (error != std::errc() || at != end || number < lowest || number > highest) {
            throw UsageError(name + " takes a whole number from " + std::to_string(lowest) +
                             " to " + std::to_string(highest) + ", not '" + value + "'.");
        }
        set(number);
    });
}

void addMovieOptions(CLI::App& app, MovieArguments& movie) {
    addNumber(app, "--fps", 1, 60, [&movie](int rate) { movie.framesPerSecond = rate; });
    addNumber(app, "--crf", 0, 51, [&movie](int factor) { movie.rateFactor = factor; });
    addOption(app, "--x264-preset", [&movie](const std::string& value) {
        if (std::find(presets.begin(), presets.end(), value) == presets.end()) {
            throw UsageError("--x264-preset takes a preset from ultrafast to placebo, not '" +
                             value + "'.");
        }
        movie.preset = value;
    });
}

/// Replaces "--name=value" by "--name", "value", and refuses it for a flag. CLI11 itself reads
/// "--fps= 5" as "--fps 5" and "--null=true" as "--null".
std::vector<std::string> splitAtEquals(const CLI::App& app,
                                       const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    bool isValue = false;
    for (auto at = arguments.begin(); at != arguments.end(); ++at) {
        if (*at == "--" && !isValue) {
            result.insert(result.end(), at, arguments.end());
            break;
        }
        const std::size_t equals = at->find('=');
        const CLI::Option* const option =
            isValue ? nullptr : app.get_option_no_throw(at->substr(0, equals));
        const bool isFlag = option != nullptr && option->get_items_expected_max() == 0;
        isValue = option != nullptr && !isFlag && equals == std::string::npos;
        if (option == nullptr || equals == std::string::npos) {
            result.push_back(*at);
        } else if (isFlag) {
            throw UsageError(option->get_name() + " takes no value.");
        } else {
            result.push_back(option->get_name());
            result.push_back(at->substr(equals + 1));
        }
    }
    return result;
}

/// Parses the options, calls their functions, and returns the operands. `arguments` come without
/// the command.
std::vector<std::string> parseOptions(CLI::App& app, const std::vector<std::string>& arguments) {
    app.set_help_flag();
    app.allow_extras();
    std::vector<std::string> reversed = splitAtEquals(app, arguments);
    std::reverse(reversed.begin(), reversed.end());
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::ArgumentMismatch&) {
        // Only the last argument can lack a value.
        throw UsageError(arguments.back() + " needs a value.");
    }

    std::vector<std::string> operands;
    bool optionsHaveEnded = false;
    for (const std::string& each : app.remaining()) {
        if (!optionsHaveEnded && each == "--") {
            optionsHaveEnded = true;
        } else if (!optionsHaveEnded && each.size() > 1 && each.front() == '-') {
            throw UsageError("There is no option '" + each + "' here.");
        } else {
            operands.push_back(each);
        }
    }
    return operands;
}

/// The only operand of a command, or nothing.
std::optional<std::string> optionalFolder(const std::vector<std::string>& operands) {
    if (operands.empty()) {
        return std::nullopt;
    }
    if (operands.front().empty()) {
        throw UsageError("A folder is missing.");
    }
    if (operands.size() > 1) {
        throw UsageError("'" + operands[1] + "' is one argument too many.");
    }
    return operands.front();
}

std::string requiredFolder(const std::vector<std::string>& operands) {
    return optionalFolder(operands.empty() ? std::vector<std::string>{""} : operands).value();
}

WindowCommand parseWindow(const std::vector<std::string>& arguments) {
    WindowCommand command;
    CLI::App app;
    app.add_flag("--demo-camera", command.demoCamera);
    command.folder = optionalFolder(parseOptions(app, arguments));
    return command;
}

DevicesCommand parseDevices(const std::vector<std::string>& arguments) {
    DevicesCommand command;
    CLI::App app;
    app.add_flag("--demo-camera", command.demoCamera);
    const std::vector<std::string> operands = parseOptions(app, arguments);
    if (!operands.empty()) {
        throw UsageError("'" + operands.front() + "' is one argument too many.");
    }
    return command;
}

FramesCommand parseFrames(const std::vector<std::string>& arguments) {
    FramesCommand command;
    CLI::App app;
    app.add_flag("--null", command.endsWithNul);
    command.folder = requiredFolder(parseOptions(app, arguments));
    return command;
}

CompileCommand parseCompile(const std::vector<std::string>& arguments) {
    CompileCommand command;
    CLI::App app;
    addMovieOptions(app, command.movie);
    command.folder = requiredFolder(parseOptions(app, arguments));
    return command;
}

CaptureCommand parseCapture(const std::vector<std::string>& arguments) {
    CaptureCommand command;
    CLI::App app;
    addMovieOptions(app, command.movie);
    app.add_flag("--compile", command.compiles);
    app.add_flag("--demo-camera", command.demoCamera);
    addNumber(app, "--count", 1, 1'000'000'000, [&](int number) { command.count = number; });
    addOption(app, "--device", [&](const std::string& value) { command.device = value; });
    addOption(app, "--interval", [&](const std::string& value) {
        command.interval = parseInterval(value);
        if (!command.interval) {
            throw UsageError("--interval takes H:M:S or seconds, not '" + value + "'.");
        }
    });
    command.folder = requiredFolder(parseOptions(app, arguments));
    if (command.device.empty()) {
        throw UsageError("--device is missing; 'vistrane devices' lists the names.");
    }
    const bool hasMovieOption =
        app.count("--fps") + app.count("--x264-preset") + app.count("--crf") > 0;
    if (hasMovieOption && !command.compiles) {
        throw UsageError("--fps, --x264-preset and --crf go with --compile.");
    }
    return command;
}

DemoCommand parseDemo(const std::vector<std::string>& arguments) {
    CLI::App app;
    return {optionalFolder(parseOptions(app, arguments))};
}

bool asksForHelp(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::any_of(arguments.begin(), end, [](const std::string& argument) {
        return argument == "--help" || argument == "-h";
    });
}

Command parseCommand(const std::vector<std::string>& arguments) {
    if (asksForHelp(arguments)) {
        return HelpCommand{};
    }
    if (arguments.empty()) {
        return WindowCommand{};
    }
    const std::string& name = arguments.front();
    const std::vector<std::string> others(arguments.begin() + 1, arguments.end());
    if (name == "--version") {
        if (!others.empty()) {
            throw UsageError("--version stands alone.");
        }
        return VersionCommand{};
    }
    if (name == "devices") {
        return parseDevices(others);
    }
    if (name == "frames") {
        return parseFrames(others);
    }
    if (name == "compile") {
        return parseCompile(others);
    }
    if (name == "capture") {
        return parseCapture(others);
    }
    if (name == "demo") {
        return parseDemo(others);
    }
    return parseWindow(arguments);
}

} // namespace

std::optional<IntervalTexts> parseInterval(const std::string& text) {
    const std::size_t first = text.find(':');
    if (first == std::string::npos) {
        if (integerValue(text) <= 0) {
            return IntervalTexts{"0", "0", text};
        }
        // Limited before it is split, because limiting each field would give a different time.
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
    try {
        return {parseCommand(arguments), {}};
    } catch (const UsageError& error) {
        return {std::nullopt, error.what()};
    }
}

std::string helpText() {
    return R"(Vistrane makes time-lapse movies from a camera.

Usage:
  vistrane [FOLDER] [--demo-camera]
      Open the window. A folder is used as if you had just chosen it in the window. If it has the
      name of a command, write it as a path: ./demo.
  vistrane devices [--demo-camera]
      Print the names of the cameras, one per line.
  vistrane frames FOLDER [--null]
      Print the full paths of the folder's frames in movie order, one per line. With --null, a
      NUL byte ends each path instead.
  vistrane compile FOLDER [--fps N] [--x264-preset NAME] [--crf N]
      Make a movie of the folder's frames, in the folder, and print its path. --fps sets the
      frames per second, 1 to 60; the default is 30.
  vistrane capture FOLDER --device NAME [--interval H:M:S] [--count N]
                   [--compile [--fps N] [--x264-preset NAME] [--crf N]] [--demo-camera]
      Save a still into the folder now and after every interval, and print each path. The
      interval is H:M:S or a number of seconds, at most 999:59:59; the default is 5 seconds.
      Without --count, capturing continues until it is interrupted, and no movie is made. With
      --count, it fails when the camera gives no still for a minute and three intervals.
  vistrane demo [FOLDER]
      Capture ten stills from the demo camera, one per second, make a movie of them at 10 frames
      per second, and print its path. The default folder is a new one in your Videos folder.
  vistrane --help | --version

--demo-camera offers a built-in test picture under the name "Demo Camera".

Results go to standard output, messages to standard error. The exit status is 0 for success, 1
for a failure, 2 for wrong usage, and 129, 130 or 143 after SIGHUP, SIGINT or SIGTERM.
)";
}

} // namespace vistrane
