#include "tests/frontends/commandline/CommandLineTest.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace vistrane {

namespace fs = std::filesystem;

std::vector<std::string> namesIn(const std::string& folder) {
    return namesEndingIn("", folder);
}

std::vector<std::string> namesEndingIn(const std::string& ending, const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.size() >= ending.size() &&
            name.compare(name.size() - ending.size(), ending.size(), ending) == 0) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

CommandLineTest::CommandLineTest() {
    options.environment = {
        {"HOME", home},
        {"XDG_CONFIG_HOME", std::nullopt},
        {"XDG_CACHE_HOME", std::nullopt},
        {"DISPLAY", std::nullopt},
        {"WAYLAND_DISPLAY", std::nullopt},
        {"QT_QPA_PLATFORM", std::nullopt},
        {"LANGUAGE", std::nullopt},
        {"LC_ALL", "C.UTF-8"},
        {"TZ", "UTC"},
        // No camera of the machine's own, and one list of GStreamer's plugins for all tests.
        {"XDG_RUNTIME_DIR", home},
        {"GST_PLUGIN_FEATURE_RANK", "v4l2deviceprovider:NONE,libcameraprovider:NONE"},
        {"GST_REGISTRY", VISTRANE_TEST_REGISTRY},
        {"FAKETIME_DONT_FAKE_MONOTONIC", "1"},
    };
}

Ended CommandLineTest::runIn(const std::vector<std::string>& launcher,
                             const std::vector<std::string>& arguments) const {
    return runTool(command(arguments, launcher), options);
}

std::vector<std::string> CommandLineTest::command(const std::vector<std::string>& arguments,
                                                  const std::vector<std::string>& launcher) {
    std::vector<std::string> all = launcher;
    all.emplace_back(VISTRANE_PROGRAM);
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

namespace {

/// The launcher, if that command works with it.
std::optional<std::vector<std::string>> tried(const std::vector<std::string>& launcher,
                                              const std::vector<std::string>& command) {
    std::vector<std::string> trial = launcher;
    trial.insert(trial.end(), command.begin(), command.end());
    return runTool(trial).status == 0 ? std::optional(launcher) : std::nullopt;
}

} // namespace

std::optional<std::vector<std::string>> unprivilegedLauncher() {
    if (::geteuid() != 0) {
        return std::vector<std::string>();
    }
    return tried({"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"},
                 {VISTRANE_PROGRAM, "--version"});
}

std::optional<std::vector<std::string>> mountingLauncher(const std::string& script) {
    auto launcher = tried({"unshare", ::geteuid() == 0 ? "-m" : "-rm", "sh", "-c"},
                          {"mount -t tmpfs tmpfs /mnt"});
    if (launcher) {
        launcher->push_back(script);
    }
    return launcher;
}

std::optional<std::vector<std::string>> frozenClock(const std::string& time) {
    // Both take over the reading of the clock, and wait for each other.
    if (std::string(VISTRANE_TEST_SANITIZE) != "") {
        return std::nullopt;
    }
    return tried({"faketime", "-f", time}, {"true"});
}

} // namespace vistrane
