// Takes any bytes as arguments, separated by NUL bytes. They are refused with a reason, or they
// make a command whose values lie in their ranges and that can be written as arguments again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
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
}

void appendFolder(Texts& arguments, const std::string& folder) {
    require(!folder.empty());
    arguments.insert(arguments.end(), {"--", folder});
}

/// The arguments for a command.
struct Writer {
    Texts operator()(const HelpCommand&) const { return {"--help"}; }
    Texts operator()(const VersionCommand&) const { return {"--version"}; }

    Texts operator()(const WindowCommand& command) const {
        Texts arguments;
        if (command.demoCamera) {
            arguments.emplace_back("--demo-camera");
        }
        if (command.folder) {
            appendFolder(arguments, *command.folder);
        }
        return arguments;
    }

    Texts operator()(const DevicesCommand& command) const {
        return command.demoCamera ? Texts{"devices", "--demo-camera"} : Texts{"devices"};
    }

    Texts operator()(const FramesCommand& command) const {
        Texts arguments{"frames"};
        if (command.endsWithNul) {
            arguments.emplace_back("--null");
        }
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const CompileCommand& command) const {
        Texts arguments{"compile"};
        appendMovie(arguments, command.movie);
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const CaptureCommand& command) const {
        require(!command.device.empty());
        Texts arguments{"capture", "--device=" + command.device};
        if (command.interval) {
            const auto& [hours, minutes, seconds] = *command.interval;
            arguments.push_back("--interval=" + hours + ":" + minutes + ":" + seconds);
        }
        if (command.count) {
            require(*command.count >= 1);
            arguments.push_back("--count=" + std::to_string(*command.count));
        }
        if (command.compiles) {
            arguments.emplace_back("--compile");
            appendMovie(arguments, command.movie);
        }
        if (command.demoCamera) {
            arguments.emplace_back("--demo-camera");
        }
        appendFolder(arguments, command.folder);
        return arguments;
    }

    Texts operator()(const DemoCommand& command) const {
        Texts arguments{"demo"};
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
