#include "tests/desktop/Desktop.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
  <keyboard>
    <keybind key="A-F4"><action name="Close"/></keybind>
  </keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
    <context name="Titlebar">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
    <context name="Close">
      <mousebind button="Left" action="Click"><action name="Close"/></mousebind>
    </context>
  </mouse>
</openbox_config>
)";

/// Notes the address; of a file it keeps a copy, since what matters is what it is right now.
constexpr char openingScript[] = R"(#!/bin/bash
case $1 in
    file://*) path=${1#file://}; path=$(printf '%b' "${path//%/\\x}") ;;
    *) path=$1 ;;
esac
number=$(($(cat "@RECORDS@/addresses" 2>/dev/null | wc -l)))
if [ -f "$path" ]; then
    cp -- "$path" "@RECORDS@/copy-$number"
fi
printf '%s\n' "$1" >>"@RECORDS@/addresses"
)";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + by.size())) {
        text.replace(at, part.size(), by);
    }
    return text;
}

bool isInPath(const std::string& tool) {
    std::istringstream folders(variable("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (::access((fs::path(folder) / tool).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

/// What the other end writes up to a line's end.
std::string readLine(int descriptor, Process& writer) {
    std::string line;
    await("the display's number", [&] {
        pollfd watched{descriptor, POLLIN, 0};
        char character = 0;
        while (::poll(&watched, 1, 0) == 1 && ::read(descriptor, &character, 1) == 1) {
            if (character == '\n') {
                return true;
            }
            line += character;
        }
        if (writer.status()) {
            throw std::runtime_error("there is no display: " + writer.written());
        }
        return false;
    });
    return line;
}

} // namespace

std::optional<std::string> Desktop::missingTool() {
    for (const char* tool : {"Xvfb", "openbox", "dbus-daemon"}) {
        if (!isInPath(tool)) {
            return tool;
        }
    }
    if (!fs::exists("/usr/share/dbus-1/services/org.a11y.Bus.service")) {
        return "at-spi2-core";
    }
    return std::nullopt;
}

Desktop::Desktop() {
    // What a child forgets becomes a child of the test, to be ended and waited for.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    ::chmod(runtime_.c_str(), 0700);
    fs::create_directories(configuration());
    const std::string cameras = variable("XDG_RUNTIME_DIR");
    environment_ = {
        {marker, work_.path()},
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
        // No camera of the machine's own, and one list of GStreamer's plugins for all tests.
        {"GST_PLUGIN_FEATURE_RANK", "v4l2deviceprovider:NONE,libcameraprovider:NONE"},
        {"GST_REGISTRY", VISTRANE_TEST_REGISTRY},
    };
    // Whatever the desktop of the tests' user says.
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
    portal_ = std::make_unique<AppearancePortal>(bus_, ColourScheme::light);
    accessibility_ = await("the assistive technologies' bus",
                           [this] { return AccessibilityBus::onSession(bus_); });
    accessibility_->countValueChanges();
}

Desktop::~Desktop() {
    accessibility_.reset();
    portal_.reset();
    screen_.reset();
    while (!processes_.empty()) {
        processes_.pop_back();
    }
    endAllWith(std::string(marker) + "=" + work_.path());
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

std::unique_ptr<Process> Desktop::start(const std::string& name,
                                        const std::vector<std::string>& command,
                                        const Environment& more) {
    Environment environment = environment_;
    for (const auto& [key, value] : more) {
        environment[key] = value;
    }
    return std::make_unique<Process>(command, environment, work_ / (name + ".log"));
}

void Desktop::startDisplay() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    // It takes the first number that nobody else has.
    processes_.push_back(std::make_unique<Process>(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                 "1600x1000x24", "-nolisten", "tcp", "-noreset", "-dpi", "96"},
        environment_, work_ / "display.log", ends[1]));
    ::close(ends[1]);
    const std::string number = readLine(ends[0], *processes_.back());
    ::close(ends[0]);
    display_ = ":" + number;
    environment_["DISPLAY"] = display_;
    screen_ = std::make_unique<Screen>(display_);
}

void Desktop::startBus() {
    processes_.push_back(
        start("bus", {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + bus_}));
    await("the session's bus", [this] { return fs::exists(runtime_ + "/bus"); });
}

void Desktop::startWindowManager() {
    const std::string settings = work_ / "openbox.xml";
    writeFile(settings, windowManagerSettings);
    processes_.push_back(start("openbox", {"openbox", "--sm-disable", "--config-file", settings}));
    // The second window is one that it has not found when it came.
    await("the window manager", [this] { return screen_->isManaged() && screen_->isManaged(); });
}

void Desktop::recordOpening() const {
    const std::string script = tools_ + "/xdg-open";
    writeFile(script, replaced(openingScript, "@RECORDS@", records_));
    ::chmod(script.c_str(), 0755);
}

Control Desktop::controlsOf(Process& process) {
    return *await("the program's controls", [&] {
        if (const auto status = process.status()) {
            throw std::runtime_error("the program has ended with " + std::to_string(*status) +
                                     ": " + process.written());
        }
        return accessibility_->programOf(process.number());
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
