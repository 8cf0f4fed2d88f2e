#include "tests/desktop/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vistrane {

namespace {

[[noreturn]] void becomeCommand(const std::vector<std::string>& command,
                                const Environment& environment, const std::string& log,
                                int descriptor) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
        ::signal(signal, SIG_DFL);
    }
    const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    if (descriptor >= 0) {
        ::fcntl(descriptor, F_SETFD, 0);
    }
    for (const auto& [name, value] : environment) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    std::vector<char*> pointers;
    for (const std::string& argument : command) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    ::execvp(pointers[0], pointers.data());
    ::_exit(127);
}

std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

Process::Process(const std::vector<std::string>& command, const Environment& environment,
                 std::string log, int descriptor)
    : log_(std::move(log)) {
    number_ = ::fork();
    if (number_ == 0) {
        becomeCommand(command, environment, log_, descriptor);
    }
    if (number_ < 0) {
        throw std::runtime_error(std::string("fork: ") + std::strerror(errno));
    }
}

Process::~Process() {
    if (!status()) {
        ::kill(number_, SIGKILL);
        ::waitpid(number_, nullptr, 0);
    }
}

std::optional<int> Process::status() {
    int status = 0;
    if (!status_ && ::waitpid(number_, &status, WNOHANG) == number_) {
        status_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }
    return status_;
}

void Process::signal(int number) {
    if (!status()) {
        ::kill(number_, number);
    }
}

std::string Process::written() const {
    return contents(log_);
}

void endAllWith(const std::string& entry) {
    // A process may be in the middle of starting another one: look again until there is none.
    for (bool found = true; found;) {
        found = false;
        std::error_code error;
        for (const auto& folder : std::filesystem::directory_iterator("/proc", error)) {
            const std::string name = folder.path().filename();
            if (name.find_first_not_of("0123456789") != std::string::npos) {
                continue;
            }
            const std::string environment = '\0' + contents(folder.path() / "environ");
            if (environment.find('\0' + entry + '\0') != std::string::npos) {
                const auto number = static_cast<pid_t>(std::stol(name));
                if (::kill(number, SIGKILL) == 0) {
                    found = true;
                    // Its parent may have been another one.
                    ::waitpid(number, nullptr, 0);
                }
            }
        }
    }
}

} // namespace vistrane
