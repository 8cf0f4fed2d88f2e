#include "tests/support/Program.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace vistrane {

namespace {

struct Ends {
    int reading = -1;
    int writing = -1;
};

Ends makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "pipe: " << std::strerror(errno);
        return {};
    }
    return {ends[0], ends[1]};
}

/// A pseudo terminal: its writing end is the terminal that the program sees.
Ends makeTerminal() {
    const int ours = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (ours < 0 || ::grantpt(ours) != 0 || ::unlockpt(ours) != 0) {
        ADD_FAILURE() << "pseudo terminal: " << std::strerror(errno);
        return {};
    }
    return {ours, ::open(::ptsname(ours), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

Ends openLog(const std::string& path) {
    return {-1, ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)};
}

int exitStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? -WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

[[noreturn]] void becomeCommand(const std::vector<std::string>& command,
                                const Program::Options& options, int output, int errors) {
    // The test may have inherited descriptors.
    ::close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The test may have been started with other dispositions.
    for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGXFSZ}) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    for (const auto& [name, value] : options.environment) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    if (options.folder.empty() || ::chdir(options.folder.c_str()) == 0) {
        std::vector<char*> pointers;
        for (const std::string& argument : command) {
            pointers.push_back(const_cast<char*>(argument.c_str()));
        }
        pointers.push_back(nullptr);
        ::execvp(pointers[0], pointers.data());
    }
    ::_exit(127);
}

/// Whether the process blocks or handles the signal, from Linux' /proc.
bool takesCareOf(pid_t process, int signal) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigBlk:", 0) == 0 || line.rfind("SigCgt:", 0) == 0) {
            const unsigned long long set = std::stoull(line.substr(7), nullptr, 16);
            if ((set >> (signal - 1)) & 1U) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

std::vector<std::string> Ended::lines() const {
    std::vector<std::string> lines;
    std::istringstream text(output);
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

void Program::Stream::read() {
    std::array<char, 65536> bytes{};
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
        // A terminal reports an error when its other end is closed.
        close();
    }
}

void Program::Stream::close() {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

Program::Program(const std::vector<std::string>& command, const Options& options)
    : log_(options.log), outputIsNotRead_(options.outputIsNotRead),
      deadline_(std::chrono::steady_clock::now() + options.timeout) {
    const Ends output = log_.empty() ? makePipe() : openLog(log_);
    const Ends errors = !log_.empty()                ? openLog(log_)
                        : options.errorsGoToTerminal ? makeTerminal()
                                                     : makePipe();
    const Ends end = makePipe();
    process_ = ::fork();
    if (process_ == 0) {
        becomeCommand(command, options, output.writing, errors.writing);
    }
    ::setpgid(process_, process_);
    ::close(output.writing);
    ::close(errors.writing);
    output_.descriptor = output.reading;
    errors_.descriptor = errors.reading;
    endPipe_[0] = end.reading;
    endPipe_[1] = end.writing;
    waiter_ = std::thread([this] { awaitEnd(); });
}

Program::~Program() {
    killGroup();
    if (waiter_.joinable()) {
        waiter_.join();
    }
    output_.close();
    errors_.close();
    ::close(endPipe_[0]);
    ::close(endPipe_[1]);
}

void Program::awaitEnd() {
    rusage usage{};
    int status = 0;
    siginfo_t information{};
    // The process keeps its number until it is reaped, so the signal reaches no other group.
    while (::waitid(P_PID, static_cast<id_t>(process_), &information, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    {
        const std::lock_guard lock(mutex_);
        ::kill(-process_, SIGKILL);
        ::wait4(process_, &status, 0, &usage);
        hasEnded_ = true;
        status_ = exitStatus(status);
        peakKibibytes_ = usage.ru_maxrss;
    }
    const char byte = 0;
    [[maybe_unused]] const ssize_t count = ::write(endPipe_[1], &byte, 1);
}

bool Program::readOnce() {
    std::array<pollfd, 3> watched{pollfd{outputIsNotRead_ ? -1 : output_.descriptor, POLLIN, 0},
                                  pollfd{errors_.descriptor, POLLIN, 0},
                                  pollfd{endPipe_[0], POLLIN, 0}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline_ - std::chrono::steady_clock::now());
    const bool isLate = left.count() <= 0;
    if (isLate) {
        ADD_FAILURE() << "The program takes too long. It wrote:\n"
                      << output_.text << "\nand\n"
                      << errors_.text;
        killGroup();
        return false;
    }
    ::poll(watched.data(), watched.size(), static_cast<int>(left.count()));
    bool hasRead = false;
    if (watched[0].revents != 0) {
        output_.read();
        hasRead = true;
    }
    if (watched[1].revents != 0) {
        errors_.read();
        hasRead = true;
    }
    // A child may keep the streams open after the program's end; all that the program wrote has
    // arrived by now.
    return hasRead || watched[2].revents == 0;
}

template <typename Condition>
bool Program::readUntil(Condition condition) {
    while (!condition()) {
        if (!readOnce()) {
            return condition();
        }
    }
    return true;
}

std::optional<std::string> Program::nextLine() {
    std::size_t newline = std::string::npos;
    const bool isThere = readUntil([&] {
        newline = output_.text.find('\n', linesEnd_);
        return newline != std::string::npos;
    });
    if (!isThere) {
        return std::nullopt;
    }
    const std::string line = output_.text.substr(linesEnd_, newline - linesEnd_);
    linesEnd_ = newline + 1;
    return line;
}

bool Program::waitForError(const std::string& text) {
    return readUntil([&] { return errors_.text.find(text) != std::string::npos; });
}

bool Program::waitUntilReadyFor(int signal) {
    while (std::chrono::steady_clock::now() < deadline_) {
        if (takesCareOf(process_, signal)) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

std::optional<int> Program::status() {
    const std::lock_guard lock(mutex_);
    return hasEnded_ ? std::optional(status_) : std::nullopt;
}

std::string Program::log() const {
    std::ifstream file(log_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Program::inheritable() const {
    namespace fs = std::filesystem;
    const fs::path process = "/proc/" + std::to_string(process_);
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator entry(process / "fdinfo", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string number = entry->path().filename();
        std::ifstream facts(entry->path());
        unsigned flags = O_CLOEXEC; // of a descriptor that was closed meanwhile
        for (std::string line; std::getline(facts, line);) {
            if (line.starts_with("flags:")) {
                flags = static_cast<unsigned>(std::stoul(line.substr(6), nullptr, 8));
            }
        }
        std::error_code ignored;
        const std::string target = fs::read_symlink(process / "fd" / number, ignored);
        if (std::stoi(number) > STDERR_FILENO && (flags & O_CLOEXEC) == 0 &&
            !target.starts_with("socket:")) {
            found.push_back(number + ": " + target);
        }
    }
    return found;
}

void Program::signal(int number) {
    const std::lock_guard lock(mutex_);
    if (!hasEnded_) {
        ::kill(process_, number);
    }
}

void Program::killGroup() {
    const std::lock_guard lock(mutex_);
    if (!hasEnded_) {
        ::kill(-process_, SIGKILL);
    }
}

void Program::closeOutput() {
    output_.close();
}

Ended Program::wait() {
    readUntil([] { return false; });
    waiter_.join();
    Ended ended;
    ended.status = status_;
    ended.output = output_.text;
    ended.errors = errors_.text;
    ended.peakKibibytes = peakKibibytes_;
    return ended;
}

Ended runTool(const std::vector<std::string>& command, const Program::Options& options) {
    return Program(command, options).wait();
}

} // namespace vistrane
