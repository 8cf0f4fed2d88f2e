#include "frontends/commandline/Arguments.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <stdexcept>
#include <string_view>

#include <CLI/CLI.hpp>

#include "core/capture/interval.h"
#include "frontends/commandline/durations.h"
#include "frontends/commandline/help_text.h"

// CLI11 parses the options. This is the only file that includes it, because it is slow to compile.
// It does not parse commands, because "vistrane --demo-camera frames" must open the window with the
// folder "frames". It does not convert numbers, because it reads "010" as 8. It does not handle
// operands, because it would accept "-5" as one.

namespace vistrane {

namespace {

constexpr std::array presets = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                "medium",    "slow",      "slower",   "veryslow", "placebo"};

/// How a command is used: its part of help.txt. The window has no name.
struct CommandHelp {
    std::string_view name;
    std::string_view text;
};

constexpr std::string_view allHelp = helpFile;
/// How the part of a command begins. The other lines are indented more.
constexpr std::string_view usageLine = "\n  vistrane ";

/// What follows the commands, with the empty line before it.
std::string_view generalHelp() {
    return allHelp.substr(allHelp.find("\n\n", allHelp.find(usageLine)) + 1);
}

std::vector<CommandHelp> commandHelps() {
    const std::size_t end = allHelp.size() - generalHelp().size();
    std::vector<CommandHelp> commands;
    for (std::size_t at = allHelp.find(usageLine); at < end;) {
        const std::size_t next = std::min(allHelp.find(usageLine, at + 1), end - 1);
        const std::string_view rest = allHelp.substr(at + usageLine.size());
        const std::size_t length = rest.find_first_not_of("abcdefghijklmnopqrstuvwxyz");
        commands.push_back({rest.substr(0, length), allHelp.substr(at + 1, next - at)});
        at = next < end - 1 ? next : end;
    }
    return commands;
}

/// The number of letters to insert, to remove, to replace or to exchange with their neighbours
/// (the optimal string alignment distance).
std::size_t typingMistakes(std::string_view typed, std::string_view meant) {
    std::vector<std::vector<std::size_t>> least(typed.size() + 1,
                                                std::vector<std::size_t>(meant.size() + 1));
    for (std::size_t i = 0; i <= typed.size(); ++i) {
        for (std::size_t j = 0; j <= meant.size(); ++j) {
            if (i == 0 || j == 0) {
                least[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = typed[i - 1] == meant[j - 1] ? 0 : 1;
            least[i][j] = std::min(
                {least[i - 1][j] + 1, least[i][j - 1] + 1, least[i - 1][j - 1] + replaced});
            if (i > 1 && j > 1 && typed[i - 1] == meant[j - 2] && typed[i - 2] == meant[j - 1]) {
                least[i][j] = std::min(least[i][j], least[i - 2][j - 2] + 1);
            }
        }
    }
    return least[typed.size()][meant.size()];
}

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

void addOutputOptions(CLI::App& app, MovieArguments& movie) {
    addOption(app, "--output", [&movie](const std::string& value) {
        if (value.empty()) {
            throw UsageError("--output takes the name of a file.");
        }
        movie.output = value;
    });
    app.add_flag("--force", movie.replaces);
}

void checkOutputOptions(const MovieArguments& movie) {
    if (movie.replaces && movie.output.empty()) {
        throw UsageError("--force goes with --output.");
    }
}

void addMovieOptions(CLI::App& app, MovieArguments& movie) {
    addOutputOptions(app, movie);
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
        } else if (isFlag && option->get_fnames().empty()) {
            throw UsageError(option->get_name() + " takes no value.");
        } else if (isFlag) {
            result.push_back(*at);
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

/// The same for a command that has a session.
std::vector<std::string> parseSessionOptions(CLI::App& app,
                                             const std::vector<std::string>& arguments,
                                             Verbosity& verbosity) {
    bool isQuiet = false;
    bool isVerbose = false;
    app.add_flag("--quiet", isQuiet);
    app.add_flag("--verbose", isVerbose);
    std::vector<std::string> operands = parseOptions(app, arguments);
    if (isQuiet && isVerbose) {
        throw UsageError("--quiet and --verbose exclude each other.");
    }
    verbosity = isQuiet ? Verbosity::quiet : isVerbose ? Verbosity::verbose : Verbosity::usual;
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

/// --demo-camera, which may have the value "bars".
class DemoOption {
public:
    explicit DemoOption(CLI::App& app) { app.add_flag("--demo-camera{scene}", picture_); }

    /// After parsing.
    template <typename Command>
    void setIn(Command& command) const {
        command.demoCamera = !picture_.empty();
        command.demoBars = picture_ == "bars";
        if (command.demoCamera && !command.demoBars && picture_ != "scene") {
            throw UsageError("--demo-camera takes no value but 'bars', not '" + picture_ + "'.");
        }
    }

private:
    std::string picture_;
};

WindowCommand parseWindow(const std::vector<std::string>& arguments) {
    WindowCommand command;
    CLI::App app;
    DemoOption demo(app);
    command.folder = optionalFolder(parseOptions(app, arguments));
    demo.setIn(command);
    return command;
}

DevicesCommand parseDevices(const std::vector<std::string>& arguments) {
    DevicesCommand command;
    CLI::App app;
    DemoOption demo(app);
    app.add_flag("--json", command.isJson);
    const std::vector<std::string> operands =
        parseSessionOptions(app, arguments, command.verbosity);
    demo.setIn(command);
    if (!operands.empty()) {
        throw UsageError("'" + operands.front() + "' is one argument too many.");
    }
    return command;
}

FramesCommand parseFrames(const std::vector<std::string>& arguments) {
    FramesCommand command;
    CLI::App app;
    app.add_flag("--null", command.endsWithNul);
    app.add_flag("--json", command.isJson);
    command.folder = requiredFolder(parseSessionOptions(app, arguments, command.verbosity));
    if (command.endsWithNul && command.isJson) {
        throw UsageError("--null and --json exclude each other.");
    }
    return command;
}

CompileCommand parseCompile(const std::vector<std::string>& arguments) {
    CompileCommand command;
    CLI::App app;
    addMovieOptions(app, command.movie);
    app.add_flag("--json", command.isJson);
    command.folder = requiredFolder(parseSessionOptions(app, arguments, command.verbosity));
    checkOutputOptions(command.movie);
    return command;
}

CaptureCommand parseCapture(const std::vector<std::string>& arguments) {
    CaptureCommand command;
    CLI::App app;
    addMovieOptions(app, command.movie);
    app.add_flag("--compile", command.compiles);
    DemoOption demo(app);
    app.add_flag("--create", command.createsFolder);
    addNumber(app, "--count", 1, 1'000'000'000, [&](int number) { command.end.count = number; });
    addOption(app, "--duration", [&](const std::string& value) {
        command.end.duration = parseDuration(value);
        if (!command.end.duration || command.end.duration->count() == 0) {
            throw UsageError("--duration takes a time such as 90s, 10m, 1h30m or H:M:S, not '" +
                             value + "'.");
        }
    });
    addOption(app, "--until", [&](const std::string& value) {
        command.end.until = parseMoment(value, std::time(nullptr));
        if (!command.end.until) {
            throw UsageError("--until takes a time of day such as 18:30, or a date and time to "
                             "come such as 2030-12-31T18:30, not '" +
                             value + "'.");
        }
    });
    addOption(app, "--device", [&](const std::string& value) { command.device = value; });
    addOption(app, "--interval", [&](const std::string& value) {
        command.interval = parseInterval(value);
        if (!command.interval) {
            throw UsageError("--interval takes seconds, M:S, H:M:S, or units such as 90s, 10m "
                             "and 1h30m, from 1 s to 999:59:59, not '" +
                             value + "'.");
        }
    });
    command.folder = requiredFolder(parseSessionOptions(app, arguments, command.verbosity));
    demo.setIn(command);
    if (command.device.empty()) {
        throw UsageError("--device is missing; 'vistrane devices' lists the names.");
    }
    const bool hasMovieOption = app.count("--fps") + app.count("--x264-preset") +
                                    app.count("--crf") + app.count("--output") +
                                    app.count("--force") >
                                0;
    if (hasMovieOption && !command.compiles) {
        throw UsageError("--fps, --x264-preset, --crf, --output and --force go with --compile.");
    }
    checkOutputOptions(command.movie);
    return command;
}

DemoCommand parseDemo(const std::vector<std::string>& arguments) {
    DemoCommand command;
    CLI::App app;
    addOutputOptions(app, command.movie);
    command.folder = optionalFolder(parseSessionOptions(app, arguments, command.verbosity));
    checkOutputOptions(command.movie);
    return command;
}

bool asksForHelp(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::any_of(arguments.begin(), end, [](const std::string& argument) {
        return argument == "--help" || argument == "-h";
    });
}

/// `help COMMAND`.
HelpCommand parseHelp(const std::vector<std::string>& topics) {
    if (topics.size() > 1) {
        throw UsageError("'" + topics[1] + "' is one argument too many.");
    }
    if (!topics.empty() && helpText(topics.front()).empty()) {
        throw UsageError("There is no command '" + topics.front() + "'.");
    }
    return {topics.empty() ? "" : topics.front()};
}

Command parseCommand(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        return WindowCommand{};
    }
    const std::string& name = arguments.front();
    if (asksForHelp(arguments)) {
        return HelpCommand{helpText(name).empty() ? "" : name};
    }
    const std::vector<std::string> others(arguments.begin() + 1, arguments.end());
    if (name == "--version" || name == "-V") {
        if (!others.empty()) {
            throw UsageError(name + " stands alone.");
        }
        return VersionCommand{};
    }
    if (name == "help") {
        return parseHelp(others);
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
    constexpr std::chrono::seconds longest(
        totalSeconds(highestHours, highestSixtieths, highestSixtieths));
    const std::optional<std::chrono::seconds> interval = parseDuration(text);
    if (!interval || *interval < std::chrono::seconds(1) || *interval > longest) {
        return std::nullopt;
    }
    const auto seconds = interval->count();
    return IntervalTexts{std::to_string(seconds / 3600), std::to_string(seconds / 60 % 60),
                         std::to_string(seconds % 60)};
}

ParsedArguments parseArguments(const std::vector<std::string>& arguments) {
    try {
        return {parseCommand(arguments), {}};
    } catch (const UsageError& error) {
        return {std::nullopt, error.what()};
    }
}

std::string helpText(const std::string& topic) {
    if (topic.empty()) {
        return std::string(allHelp);
    }
    const std::vector<CommandHelp> commands = commandHelps();
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const CommandHelp& each) { return each.name == topic; });
    return found == commands.end()
               ? ""
               : "Usage:\n" + std::string(found->text) + std::string(generalHelp());
}

std::string similarCommand(const std::string& word) {
    std::string_view best;
    std::size_t fewest = 3;
    for (const CommandHelp& each : commandHelps()) {
        const std::size_t mistakes = typingMistakes(word, each.name);
        if (!each.name.empty() && mistakes < std::min(fewest, each.name.size() / 2)) {
            fewest = mistakes;
            best = each.name;
        }
    }
    return std::string(best);
}

} // namespace vistrane
