#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/frontends/commandline/Program.h"

namespace vistrane {

/// A folder of the test's own, away again at its end.
class WorkFolder {
public:
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path() const { return path_.string(); }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    /// A new folder in this one.
    std::string makeFolder(const std::string& name) const;

private:
    std::filesystem::path path_;
};

/// The names of a folder's entries, hidden ones too, in the order of their bytes.
std::vector<std::string> namesIn(const std::string& folder);

/// The names that end so.
std::vector<std::string> namesEndingIn(const std::string& ending, const std::string& folder);

std::string contentsOf(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);

std::size_t count(const std::string& text, const std::string& part);

/// Tests of the program as a user runs it: with a home folder of its own, in which nothing was
/// ever saved, and without the machine's own cameras. `folder` is empty at first.
class CommandLineTest : public testing::Test {
protected:
    CommandLineTest();

    /// The program with these arguments, to its end.
    Ended run(const std::vector<std::string>& arguments) const { return runIn({}, arguments); }
    /// Handed to another command, for instance one that sets the clock.
    Ended runIn(const std::vector<std::string>& launcher,
                const std::vector<std::string>& arguments) const;
    static std::vector<std::string> command(const std::vector<std::string>& arguments,
                                            const std::vector<std::string>& launcher = {});

    WorkFolder work;
    std::string home = work.makeFolder("home");
    std::string folder = work.makeFolder("a folder");
    Program::Options options;
};

/// A launcher for a user without privileges; nothing when there is none who may run the program.
std::optional<std::vector<std::string>> unprivilegedLauncher();

/// A launcher that takes a shell script, for which file systems can be mounted that only it sees;
/// nothing where that is not allowed.
std::optional<std::vector<std::string>> mountingLauncher(const std::string& script);

/// The clock stands still at that local time, which is the universal time; what measures time runs
/// on. Nothing when faketime is not installed or does not get on with the program's sanitizer.
std::optional<std::vector<std::string>> frozenClock(const std::string& time);

} // namespace vistrane
