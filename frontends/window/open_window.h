#pragma once

#include <optional>
#include <string>

namespace vistrane {

struct WindowOptions {
    /// The program's version, "MAJOR.MINOR.PATCH".
    std::string version;
    /// A project folder, already checked. It is remembered as if the user had just confirmed it.
    std::optional<std::string> folder = std::nullopt;
    bool demoCamera = false;
    bool demoBars = false;
};

/// Whether the environment names a display.
bool hasDisplay();

/// Creates the QApplication, which is never destroyed. Main thread, once.
void makeApplication();

/// Opens the window and runs the program in it. Ends the process when the window is closed, after a
/// signal, or if no window can be opened. Main thread.
[[noreturn]] void openWindow(const WindowOptions& options);

} // namespace vistrane
