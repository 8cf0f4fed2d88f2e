#include "tests/desktop/Desktop.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <QStandardPaths>

#include "tests/desktop/waiting.h"

namespace vistrane {

namespace fs = std::filesystem;

namespace {

constexpr char marker[] = "VISTRANE_TEST_DESKTOP";

constexpr char windowManagerSettings[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <theme><name>Clearlooks</name></theme>
  <desktops><number>1</number></desktops>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
</openbox_config>
)";

/// Records the address, and of a file a copy of what it is at this moment.
constexpr char openingScript[] = R"sh(#!/bin/bash
cd "$VISTRANE_TEST_RECORDS" || exit
if [ -f "$1" ]; then
    cp -- "$1" "copy-$(cat addresses 2>/dev/null | wc -l)"
fi
printf '%s\n' "$1" >>addresses
)sh";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Ends every process with this entry, "NAME=value", in its environment: also children of children.
void endAllWith(const std::string& entry) {
    // A process may just be starting another one: look until there is none.
    for (bool found = true; found;) {
        found = false;
        std::error_code error;
        for (const auto& folder : fs::directory_iterator("/proc", error)) {
            const std::string name = folder.path().filename();
            const std::string environment = '\0' + contentsOf(folder.path() / "environ");
            if (name.find_first_not_of("0123456789") == std::string::npos &&
                environment.find('\0' + entry + '\0') != std::string::npos) {
                const auto process = static_cast<pid_t>(std::stol(name));
                found = ::kill(process, SIGKILL) == 0 || found;
                ::waitpid(process, nullptr, 0);
            }
        }
    }
}

} // namespace

std::optional<std::string> Desktop::missingTool() {
    for (const char* tool : {"Xvfb", "openbox", "dbus-daemon"}) {
        if (QStandardPaths::findExecutable(tool).isEmpty()) {
            return tool;
        }
    }
    if (!fs::exists("/usr/share/dbus-1/services/org.a11y.Bus.service")) {
        return "at-spi2-core";
    }
    return std::nullopt;
}

Desktop::Desktop() {
    // Orphans of the desktop's programs become children of the test, which reaps them.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    ::chmod(runtime_.c_str(), 0700);
    fs::create_directories(configuration());
    const std::string cameras = variable("XDG_RUNTIME_DIR");
    environment_ = {
        {marker, work_.path()},
        {"VISTRANE_TEST_RECORDS", records_},
        {"HOME", home_},
        {"XDG_RUNTIME_DIR", runtime_},
        {"PIPEWIRE_RUNTIME_DIR", cameras.empty() ? runtime_ : cameras},
        {"XDG_CONFIG_HOME", configuration()},
        {"XDG_CACHE_HOME", home_ + "/.cache"},
        {"XDG_DATA_HOME", home_ + "/.local/share"},
        {"XDG_STATE_HOME", home_ + "/.local/state"},
        {"PATH", tools_ + ":" + variable("PATH")},
        {"DBUS_SESSION_BUS_ADDRESS", bus_},
        {"LC_ALL", "C.UTF-8"},
        {"LANGUAGE", std::nullopt},
        {"TZ", "UTC"},
        {"QT_QPA_PLATFORM", "xcb"},
        {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"},
        // None of the machine's own cameras, and one registry of GStreamer plugins for all tests.
        {"GST_PLUGIN_FEATURE_RANK", "v4l2deviceprovider:NONE,libcameraprovider:NONE"},
        {"GST_REGISTRY", VISTRANE_TEST_REGISTRY},
    };
    // Settings of the desktop on which the tests were started.
    for (const char* name :
         {"XAUTHORITY", "WAYLAND_DISPLAY", "SESSION_MANAGER", "XDG_CURRENT_DESKTOP",
          "DESKTOP_SESSION", "KDE_FULL_SESSION", "GNOME_DESKTOP_SESSION_ID", "BROWSER",
          "DEFAULT_BROWSER", "NO_AT_BRIDGE", "QT_ACCESSIBILITY", "QT_SCALE_FACTOR",
          "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME", "AT_SPI_BUS_ADDRESS"}) {
        environment_[name] = std::nullopt;
    }
    recordOpening();
    startDisplay();
    startBus();
    startWindowManager();
    services_ = std::make_unique<FakeServices>(bus_);
    services_->offerScheme(static_cast<unsigned>(ColourScheme::light));
    accessibility_ = await("the assistive technologies' bus",
                           [this] { return std::make_shared<AccessibilityBus>(bus_); });
}

Desktop::~Desktop() {
    accessibility_.reset();
    services_.reset();
    screen_.reset();
    programs_.clear();
    endAllWith(std::string(marker) + "=" + work_.path());
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

std::unique_ptr<Program> Desktop::start(const std::string& name,
                                        const std::vector<std::string>& command,
                                        const EnvironmentChanges& more) {
    ProgramOptions options{environment_};
    for (const auto& [key, value] : more) {
        options.environment[key] = value;
    }
    options.log = work_ / (name + ".log");
    return std::make_unique<Program>(command, options);
}

void Desktop::startDisplay() {
    // It takes the first free number and writes that to its standard output.
    programs_.push_back(std::make_unique<Program>(
        std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "1600x1000x24",
                                 "-nolisten", "tcp", "-noreset", "-dpi", "96"},
        ProgramOptions{environment_}));
    const auto number = programs_.back()->nextLine();
    if (!number) {
        throw std::runtime_error("there is no display: " + programs_.back()->errors());
    }
    environment_["DISPLAY"] = ":" + *number;
    screen_ = std::make_unique<Screen>(":" + *number);
}

void Desktop::startBus() {
    programs_.push_back(
        start("bus", {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + bus_}));
    await("the session bus", [this] { return fs::exists(runtime_ + "/bus"); });
}

void Desktop::startWindowManager() {
    const std::string settings = work_ / "openbox.xml";
    writeFile(settings, windowManagerSettings);
    programs_.push_back(start("openbox", {"openbox", "--sm-disable", "--config-file", settings}));
    // It may have found the first window by itself when it started.
    await("the window manager", [this] { return screen_->isManaged() && screen_->isManaged(); });
}

void Desktop::recordOpening() const {
    const std::string script = tools_ + "/xdg-open";
    writeFile(script, openingScript);
    ::chmod(script.c_str(), 0755);
}

Control Desktop::controlsOf(Program& program) {
    return *await("the program's controls", [&] {
        if (const auto status = program.status()) {
            throw std::runtime_error("the program has ended with " + std::to_string(*status) +
                                     ": " + program.log());
        }
        return accessibility_->programOf(program.process());
    });
}

std::vector<std::string> Desktop::opened() const {
    std::vector<std::string> addresses;
    std::ifstream file(records_ + "/addresses");
    for (std::string line; std::getline(file, line);) {
        addresses.push_back(line);
    }
    return addresses;
}

std::string Desktop::copyOfOpened(std::size_t index) const {
    return records_ + "/copy-" + std::to_string(index);
}

std::string Desktop::logs() const {
    std::string text;
    for (const std::string& name : namesEndingIn(".log", work_.path())) {
        const std::string log = contentsOf(work_ / name);
        if (!log.empty()) {
            text.append("--- ").append(name).append("\n").append(log);
        }
    }
    return text;
}

} // namespace vistrane
