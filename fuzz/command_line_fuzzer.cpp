// Takes any bytes as arguments, separated by NUL bytes. They are refused with a reason, or they
// make a command whose values lie in their ranges and that can be written as arguments again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frontends/commandline/Arguments.h"

namespace vistrane {

namespace {

using Texts = std::vector<std::string>;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

Texts split(std::string_view bytes) {
    Texts arguments;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\0');
        arguments.emplace_back(bytes.substr(0, end));
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return arguments;
}

void appendFlag(Texts& arguments, const char* flag, bool isSet) {
    if (isSet) {
        arguments.emplace_back(flag);
    }
}

void appendOutput(Texts& arguments, const MovieArguments& movie) {
    if (!movie.output.empty()) {
        arguments.push_back("--output=" + movie.output);
    }
    require(!movie.replaces || !movie.output.empty());
    appendFlag(arguments, "--force", movie.replaces);
}

void appendMovie(Texts& arguments, const MovieArguments& movie) {
    require(movie.framesPerSecond >= 1 && movie.framesPerSecond <= 60);
    arguments.push_back("--fps=" + std::to_string(movie.framesPerSecond));
    if (!movie.preset.empty()) {
        arguments.insert(arguments.end(), {"--x264-preset", movie.preset});
    }
    if (movie.rateFactor) {
        require(*movie.rateFactor >= 0 && *movie.rateFactor <= 51);
        arguments.push_back("--crf=" + std::to_string(*movie.rateFactor));
    }
    appendOutput(arguments, movie);
}

void appendVerbosity(Texts& arguments, Verbosity verbosity) {
    appendFlag(arguments, "--quiet", verbosity == Verbosity::quiet);
    appendFlag(arguments, "--verbose", verbosity == Verbosity::verbose);
}

void appendFolder(Texts& arguments, const std::string& folder) {
    require(!folder.empty());
    arguments.insert(arguments.end(), {"--", folder});
}

template <typename Command>
void appendDemo(Texts& arguments, const Command& command) {
    require(command.demoCamera || !command.demoBars);
    appendFlag(arguments, command.demoBars ? "--demo-camera=bars" : "--demo-camera",
               command.demoCamera);
}

/// The arguments for a command.
struct Writer {
    Texts operator()(const HelpCommand& command) const {
        return command.topic.empty() ? Texts{"help"} : Texts{"help", command.topic};
    }
    Texts operator()(const VersionCommand&) const { return {"--version"}; }

    Texts operator()(const WindowCommand& command) const {
        Texts arguments;
        appendDemo(arguments, command);
        if (command.folder) {
            appendFolder(arguments, *command.folder);
        }
        return arguments;
    }

    Texts operator()(const DevicesCommand& command) const {
        Texts arguments{"devices"};
        appendVerbosity(arguments, command.verbosity);
        appendDemo(arguments, command);
        appendFlag(arguments, "--json", command.isJson);
        return arguments;
    }

    Texts operator()(const FramesCommand& command) const {
        Texts arguments{"frames"};
        appendVerbosity(arguments, command.verbosity);
        appendFlag(arguments, "--null", command.endsWithNul);
        appendFlag(arguments, "--json", command.isJson);
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const CompileCommand& command) const {
        Texts arguments{"compile"};
        appendVerbosity(arguments, command.verbosity);
        appendMovie(arguments, command.movie);
        appendFlag(arguments, "--json", command.isJson);
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const CaptureCommand& command) const {
        require(!command.device.empty());
        Texts arguments{"capture", "--device=" + command.device};
        appendVerbosity(arguments, command.verbosity);
        if (command.interval) {
            const auto& [hours, minutes, seconds] = *command.interval;
            arguments.push_back("--interval=" + hours + ":" + minutes + ":" + seconds);
        }
        if (command.end.count) {
            require(*command.end.count >= 1);
            arguments.push_back("--count=" + std::to_string(*command.end.count));
        }
        if (command.end.duration) {
            require(command.end.duration->count() >= 1);
            arguments.push_back("--duration=" + std::to_string(command.end.duration->count()));
        }
        if (command.end.until) {
            std::tm moment{};
            char text[64];
            require(::localtime_r(&*command.end.until, &moment) != nullptr);
            require(std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &moment) > 0);
            arguments.push_back(std::string("--until=") + text);
        }
        appendFlag(arguments, "--create", command.createsFolder);
        if (command.compiles) {
            arguments.emplace_back("--compile");
            appendMovie(arguments, command.movie);
        }
        appendDemo(arguments, command);
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const DemoCommand& command) const {
        Texts arguments{"demo"};
        appendVerbosity(arguments, command.verbosity);
        appendOutput(arguments, command.movie);
        if (command.folder) {
            appendFolder(arguments, *command.folder);
        }
        return arguments;
    }
};

void tryArguments(const Texts& arguments) {
    const ParsedArguments parsed = parseArguments(arguments);
    require(parsed.command.has_value() == parsed.error.empty());
    if (!parsed.command) {
        return;
    }
    const Texts written = std::visit(Writer(), *parsed.command);
    const ParsedArguments again = parseArguments(written);
    require(again.command && std::visit(Writer(), *again.command) == written);
}

} // namespace

} // namespace vistrane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vistrane::tryArguments(
        vistrane::split(std::string_view(reinterpret_cast<const char*>(data), size)));
    return 0;
}
