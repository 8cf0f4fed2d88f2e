#include "backends/posix/launch_program.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "backends/posix/threads.h"

extern "C" char** environ; // NOLINT(readability-redundant-declaration): not in every unistd.h

namespace vistrane {

namespace {

constexpr int cannotBeStarted = 127;

/// The streams, signals and session of the new process.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions_);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0);
        }
#ifdef __GLIBC__
        // Our own descriptors are close-on-exec, but those of some libraries are not.
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
#endif
        sigset_t none;
        sigset_t ignoredByUs;
        sigemptyset(&none);
        sigemptyset(&ignoredByUs);
        sigaddset(&ignoredByUs, SIGPIPE);
        sigaddset(&ignoredByUs, SIGXFSZ);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &ignoredByUs);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                   POSIX_SPAWN_SETSID);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const {
        return &actions_;
    }
    const posix_spawnattr_t* attributes() const {
        return &attributes_;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

int statusOf(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            return cannotBeStarted;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int run(std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (std::string& each : command) {
        arguments.push_back(each.data());
    }
    arguments.push_back(nullptr);
    const SpawnSettings settings;
    pid_t process = 0;
    if (::posix_spawnp(&process, arguments.front(), settings.actions(), settings.attributes(),
                       arguments.data(), environ) != 0) {
        return cannotBeStarted;
    }
    return statusOf(process);
}

} // namespace

void launchProgram(std::vector<std::string> command, const std::function<void(int status)>& ended) {
    const auto work = [command = std::move(command), ended]() mutable { ended(run(command)); };
    if (!startDetachedThread(work)) {
        ended(cannotBeStarted);
    }
}

} // namespace vistrane
