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
    /// The exit status, or the negative number of the signal that ended it.
    int status = 0;
    std::string output;
    std::string errors;
    /// The largest resident set.
    long peakKibibytes = 0;

    std::vector<std::string> lines() const;
};

/// Changes to the test's own environment. A variable without a value is unset.
using EnvironmentChanges = std::map<std::string, std::optional<std::string>>;

struct ProgramOptions {
    EnvironmentChanges environment = {};
    /// The working folder, the test's own if empty.
    std::string folder = {};
    /// A file to which both streams are appended, for a program that runs in the background. Empty:
    /// this object reads them.
    std::string log = {};
    bool errorsGoToTerminal = false;
    /// Leaves standard output unread, so that the program blocks once the pipe is full.
    bool outputIsNotRead = false;
    /// Ends a test that would never end. No test depends on it otherwise.
    std::chrono::seconds timeout{120};
};

/// One run of a program, in a process group of its own. Its streams are read while the test waits
/// for something, so that neither blocks the program. A run that exceeds the timeout is killed and
/// fails the test. The whole group is killed when the program ends, and at the latest with this
/// object or with the test's main thread.
class Program {
public:
    using Options = ProgramOptions;

    explicit Program(const std::vector<std::string>& command, const Options& options = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t process() const { return process_; }

    /// As `Ended::status`; nothing while it runs.
    std::optional<int> status();

    /// The next line of standard output; nothing at its end.
    std::optional<std::string> nextLine();
    /// Waits until standard error contains the text; false when the program ends without it.
    bool waitForError(const std::string& text);
    /// Waits until the program blocks or handles that signal.
    bool waitUntilReadyFor(int signal);
    const std::string& errors() const { return errors_.text; }
    /// What `ProgramOptions::log` contains.
    std::string log() const;

    /// The descriptors that are not close-on-exec, besides the three streams, and what they refer
    /// to. Without sockets, some of which are GStreamer's own. From Linux' /proc.
    std::vector<std::string> inheritable() const;

    /// To the program alone, not to its group.
    void signal(int number);
    /// Closes the reading end of standard output.
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
    std::string log_;
    bool outputIsNotRead_;
    std::chrono::steady_clock::time_point deadline_;

    std::mutex mutex_;
    bool hasEnded_ = false;
    int status_ = 0;
    long peakKibibytes_ = 0;
    /// Written to when the process has ended.
    int endPipe_[2] = {-1, -1};
    std::thread waiter_;
};

/// Runs a command to its end.
Ended runTool(const std::vector<std::string>& command, const Program::Options& options = {});

} // namespace vistrane
