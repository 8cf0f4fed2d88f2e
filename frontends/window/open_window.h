#pragma once

#include <optional>
#include <string>

namespace vistrane {

/// What the window is opened with.
struct WindowOptions {
    /// The program's version, "MAJOR.MINOR.PATCH".
    std::string version;
    /// A project folder, checked, to be remembered as if it had just been confirmed.
    std::optional<std::string> folder = std::nullopt;
    bool demoCamera = false;
};

/// Whether the environment names a display to open a window on.
bool hasDisplay();

/// Makes the QApplication, which is never taken apart. Main thread only, once.
void makeApplication();

/// Opens the window and runs the program in it. Ends the process when the window is closed, when
/// a signal ends the program or when no window can be opened; main thread only.
[[noreturn]] void openWindow(const WindowOptions& options);

} // namespace vistrane
