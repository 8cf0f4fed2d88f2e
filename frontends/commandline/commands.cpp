#include "frontends/commandline/commands.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>

#include <unistd.h>

#include "backends/cameras/CameraOptions.h"
#include "backends/posix/BackgroundWriter.h"
#include "backends/posix/EndingSignals.h"
#include "frontends/commandline/RoomWarning.h"
#include "frontends/commandline/Session.h"
#include "frontends/commandline/demo_folder.h"
#include "frontends/commandline/json.h"
#include "frontends/commandline/project_folder_argument.h"
#include "frontends/commandline/version.h"
#include "frontends/window/open_window.h"
#include "platform/foundation/NSString.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr int demoStills = 10;
constexpr int demoFramesPerSecond = 10;

/// The exit status for a movie without some of the frames.
constexpr int leftOutStatus = 3;

/// Writes the reason to standard error and ends the process with status 1.
[[noreturn]] void refuse(const std::string& reason) {
    std::cerr << "vistrane: " << reason << '\n';
    std::exit(1);
}

/// The path of a project folder. Ends the process, with the reason and the hint, if the folder
/// cannot be used.
std::string checkedFolder(const std::string& argument, const std::string& hint = {}) {
    const ProjectFolderArgument folder = projectFolderArgument(argument);
    if (!folder.error.empty()) {
        refuse(folder.error + hint);
    }
    return folder.path;
}

/// The arguments with the absolute path of `--output`. Ends the process, with the reason, if the
/// movie could not get that name.
MovieArguments checkedOutput(MovieArguments movie) {
    if (movie.output.empty()) {
        return movie;
    }
    std::error_code error;
    movie.output = std::filesystem::absolute(movie.output, error).lexically_normal();
    const std::string shown = "'" + shownText(movie.output) + "'";
    if (pathExtension(std::filesystem::path(movie.output).filename().string()) == "png") {
        refuse("Cannot write the movie " + shown +
               ": a file with that ending is a frame. Name another one, such as NAME.mov.");
    }
    const std::filesystem::file_status status =
        std::filesystem::symlink_status(movie.output, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        refuse("Cannot write the movie " + shown + ": that is no file. Name another one.");
    }
    if (std::filesystem::exists(status) && !movie.replaces) {
        refuse("Cannot write the movie " + shown +
               ": it exists already. Name another file, or add --force.");
    }
    const std::filesystem::path folder = std::filesystem::path(movie.output).parent_path();
    if (!std::filesystem::is_directory(folder, error)) {
        refuse("Cannot write the movie " + shown + ": there is no folder '" +
               shownText(folder.string()) + "'.");
    }
    return movie;
}

/// A hint for an argument that may be a misspelled command.
std::string hintOnCommands(const std::string& folder) {
    if (folder.find('/') != std::string::npos) {
        return "";
    }
    const std::string similar = similarCommand(folder);
    return " There is no command '" + shownText(folder) + "' either; " +
           (similar.empty() ? "'vistrane --help' lists them." : "did you mean '" + similar + "'?");
}

/// Writes to standard output without a session. Returns the exit status.
int print(const std::string& text) {
    BackgroundWriter output(STDOUT_FILENO, [](int) {});
    output.write(text);
    if (output.flush()) {
        return 0;
    }
    std::cerr << outputError(output.failure()) << '\n';
    return 1;
}

/// Creates and launches a session. It ends with the process.
Session& startSession(const SessionOptions& options) {
    Session& session = *new Session(options);
    session.launch();
    return session;
}

[[noreturn]] void captureAndCompile(Session& session, const CaptureCommand& command,
                                    const std::function<void(const std::string&)>& saved) {
    session.pickDevice(command.device);
    if (command.interval) {
        session.enterInterval(*command.interval);
    }
    RoomWarning warning;
    const bool isComplete = session.capture(
        command.end, command.compiles && !command.end.count, [&](const std::string& path) {
            saved(path);
            if (const auto file = fileRoom(path)) {
                if (const auto sentence = warning.frameWasSaved(file->size, file->room)) {
                    session.warn(*sentence);
                }
            }
        });
    bool isPartial = false;
    if (command.compiles) {
        const Session::Movie movie = session.compile(command.movie.framesPerSecond);
        session.print(movie.facts.path);
        isPartial = !movie.leftOut.empty();
    }
    session.end(!isComplete ? 1 : isPartial ? leftOutStatus : 0);
}

int run(const HelpCommand& command) {
    return print(helpText(command.topic));
}

int run(const VersionCommand&) {
    return print(std::string("vistrane ") + programVersion + "\n");
}

int run(const WindowCommand& command) {
    WindowOptions options{
        .version = programVersion, .demoCamera = command.demoCamera, .demoBars = command.demoBars};
    if (command.folder) {
        options.folder = checkedFolder(*command.folder, hintOnCommands(*command.folder));
    }
    openWindow(options);
}

int run(const DevicesCommand& command) {
    Session& session = startSession({.findsCameras = true,
                                     .demoCamera = command.demoCamera,
                                     .demoBars = command.demoBars,
                                     .verbosity = command.verbosity});
    const std::vector<std::string> names = session.deviceNames();
    if (names.empty()) {
        session.warn("No camera was found.");
    }
    if (command.isJson) {
        session.print(jsonOf("devices", names));
    } else {
        for (const std::string& name : names) {
            session.print(name);
        }
    }
    session.end(0);
}

int run(const FramesCommand& command) {
    Session& session =
        startSession({.folder = checkedFolder(command.folder), .verbosity = command.verbosity});
    const std::vector<std::string> frames = session.frames();
    if (command.isJson) {
        session.print(jsonOf("frames", frames));
    } else {
        const char end = command.endsWithNul ? '\0' : '\n';
        for (const std::string& path : frames) {
            session.print(path, end);
        }
    }
    session.end(0);
}

int run(const CompileCommand& command) {
    Session& session = startSession({.folder = checkedFolder(command.folder),
                                     .movie = checkedOutput(command.movie),
                                     .verbosity = command.verbosity});
    const Session::Movie movie = session.compile(command.movie.framesPerSecond);
    session.print(command.isJson ? jsonOf(movie) : movie.facts.path);
    session.end(movie.leftOut.empty() ? 0 : leftOutStatus);
}

int run(const CaptureCommand& command) {
    if (command.createsFolder) {
        const std::string error = createFolder(command.folder);
        if (!error.empty()) {
            refuse(error);
        }
    }
    Session& session = startSession({.folder = checkedFolder(command.folder),
                                     .findsCameras = true,
                                     .demoCamera = command.demoCamera,
                                     .demoBars = command.demoBars,
                                     .movie = checkedOutput(command.movie),
                                     .verbosity = command.verbosity});
    captureAndCompile(session, command,
                      [&session](const std::string& path) { session.print(path); });
}

int run(const DemoCommand& command) {
    const MovieArguments output = checkedOutput(command.movie);
    std::string path;
    std::function<void()> cleanUp = [] {};
    if (command.folder) {
        path = checkedFolder(*command.folder);
    } else {
        // Handled before the folder is made: a signal during that waits for its path.
        struct Made {
            std::mutex mutex;
            std::string path;
        };
        const auto made = std::make_shared<Made>();
        cleanUp = [made] {
            const std::lock_guard lock(made->mutex);
            removeIfEmpty(made->path);
        };
        EndingSignals::handle({{}, {}, [cleanUp](int status) {
                                   cleanUp();
                                   std::_Exit(status);
                               }});
        const std::lock_guard lock(made->mutex);
        const NewFolder folder = createDemoFolder(videosFolder());
        if (!folder.error.empty()) {
            refuse(folder.error);
        }
        made->path = path = folder.path;
    }
    CaptureCommand capture;
    capture.device = demoCameraName;
    capture.interval = IntervalTexts{"0", "0", "1"};
    capture.end.count = demoStills;
    capture.compiles = true;
    capture.movie.framesPerSecond = demoFramesPerSecond;
    SessionOptions options;
    options.folder = path;
    options.demoCamera = true;
    options.cleanUp = cleanUp;
    options.movie = output;
    options.verbosity = command.verbosity;
    Session& session = startSession(options);
    captureAndCompile(session, capture,
                      [&session](const std::string& frame) { session.say(shownText(frame)); });
}

} // namespace

int runCommand(const Command& command) {
    return std::visit([](const auto& each) { return run(each); }, command);
}

} // namespace vistrane
