#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Program.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {

/// The names of all entries of a folder, in byte order.
std::vector<std::string> namesIn(const std::string& folder);

/// The names with that ending.
std::vector<std::string> namesEndingIn(const std::string& ending, const std::string& folder);

std::string contentsOf(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);

std::size_t count(const std::string& text, const std::string& part);

/// Runs the program as a user does, with an empty home folder and without the machine's cameras.
/// `folder` is empty at first.
class CommandLineTest : public testing::Test {
protected:
    CommandLineTest();

    /// Runs the program with these arguments to its end.
    Ended run(const std::vector<std::string>& arguments) const { return runIn({}, arguments); }
    /// The same through another command, for instance one that sets the clock.
    Ended runIn(const std::vector<std::string>& launcher,
                const std::vector<std::string>& arguments) const;
    static std::vector<std::string> command(const std::vector<std::string>& arguments,
                                            const std::vector<std::string>& launcher = {});

    WorkFolder work;
    std::string home = work.makeFolder("home");
    std::string folder = work.makeFolder("a folder");
    Program::Options options;
};

/// A launcher that drops privileges. Nothing if that is not possible.
std::optional<std::vector<std::string>> unprivilegedLauncher();

/// A launcher that runs a shell script in its own mount namespace. Nothing if that is not allowed.
std::optional<std::vector<std::string>> mountingLauncher(const std::string& script);

/// A launcher that stops the wall clock at that local time. The monotonic clock keeps running.
/// Nothing if faketime is not installed or does not work with the program's sanitizer.
std::optional<std::vector<std::string>> frozenClock(const std::string& time);

} // namespace vistrane
