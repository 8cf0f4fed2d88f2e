#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace vistrane {

/// How a program ended, and everything that it wrote.
struct Ended {
    /// The exit status; the signal's number, negative, of one that a signal ended.
    int status = 0;
    std::string output;
    std::string errors;
    /// The most memory that it had at one time.
    long peakKibibytes = 0;

    std::vector<std::string> lines() const;
};

/// How a program is run.
struct ProgramOptions {
    /// Changes to the test's own environment; nothing takes a variable away.
    std::map<std::string, std::optional<std::string>> environment = {};
    /// The working folder, the test's own if empty.
    std::string folder = {};
    bool errorsGoToTerminal = false;
    /// Nobody takes what it writes to standard output, so that it stands still once the pipe is
    /// full.
    bool outputIsNotRead = false;
    /// Longer than any machine needs.
    std::chrono::seconds limit{120};
};

/// One run of any program in a process group of its own. Its output is read while the test waits
/// for something, so that neither of its streams ever holds it up. A run that takes longer than
/// any machine needs fails the test and is killed. What it started ends with it.
class Program {
public:
    using Options = ProgramOptions;

    explicit Program(const std::vector<std::string>& command, const Options& options = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t process() const { return process_; }

    /// The next line of standard output; nothing when it has ended.
    std::optional<std::string> nextLine();
    /// Waits until standard error holds the text; false when it has ended without.
    bool waitForError(const std::string& text);
    /// Waits until the program takes care of that signal itself, not by its default action.
    bool waitUntilReadyFor(int signal);
    const std::string& errors() const { return errors_.text; }

    /// To the program alone, not to its group.
    void signal(int number);
    /// From now on nobody reads its standard output.
    void closeOutput();

    /// Waits for the end.
    Ended wait();

private:
    struct Stream {
        int descriptor = -1;
        std::string text = {};

        void read();
        void close();
    };

    void awaitEnd();
    void killGroup();
    /// Reads until `condition` holds or nothing more can come; false for the latter.
    template <typename Condition>
    bool readUntil(Condition condition);
    bool readOnce();

    pid_t process_ = -1;
    Stream output_;
    Stream errors_;
    std::size_t linesEnd_ = 0;
    bool outputIsNotRead_;
    std::chrono::steady_clock::time_point deadline_;

    std::mutex mutex_;
    bool hasEnded_ = false;
    int waitStatus_ = 0;
    long peakKibibytes_ = 0;
    /// Written to when the process has ended.
    int endPipe_[2] = {-1, -1};
    std::thread waiter_;
};

/// Runs a command to its end.
Ended runTool(const std::vector<std::string>& command, const Program::Options& options = {});

} // namespace vistrane
