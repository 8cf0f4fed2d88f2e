#pragma once

#include <functional>

#include <QObject>

#include "frontends/window/WindowLog.h"
#include "frontends/window/open_window.h"

namespace vistrane {

/// The program in its window: the controller and the info panel, with the interface files and real
/// media. One for the process. Main thread only, after `makeApplication`.
///
/// Closing the main window or quitting ends the process immediately with status 0, whatever else is
/// open: saves the settings, removes unfinished movies, and does not wait for other threads.
/// SIGINT, SIGHUP and SIGTERM do the same with status 128 + the signal.
class WindowSession final : public QObject {
public:
    WindowSession(const WindowOptions& options, WindowLog& log);
    /// Never called: a session ends with the process.
    ~WindowSession() override = default;

    /// Shows the main window, sends `awakeFromNib` and runs the program to its end. `launched` is
    /// called when all initial windows are shown.
    [[noreturn]] void run(const std::function<void()>& launched = {});

protected:
    /// Watches the main window for close and expose events.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Parts;

    void launch();
    void connectInterface();
    void showNoCameraHint();
    void showMainWindow();
    /// Does everything that can wait until the main window is drawn. A second call does nothing.
    void mainWindowIsDrawn();
    void showOtherWindows();
    /// Waits a short time until all visible windows are exposed, because listing cameras blocks
    /// drawing.
    void awaitDisplay();
    /// Gives the keyboard focus to the last visible window of the interface.
    void takeKeyboard();
    void followAppearance();
    void keepAwakeWhileCapturing();
    void showCapturing();
    void rememberSettings();
    void showFailuresOfThreads();
    void holdPlayerWhileScrubbing();
    void handleEndings();
    [[noreturn]] void end(int status);

    Parts& parts_;
};

} // namespace vistrane
