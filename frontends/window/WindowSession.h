#pragma once

#include <functional>

#include <QObject>

#include "frontends/window/WindowLog.h"
#include "frontends/window/open_window.h"

namespace vistrane {

/// The program in its window: the controller and the info panel with the interface files, real
/// media and Qt's event loop. One for the process; main thread only, and the QApplication is there.
///
/// The process ends at once, with status 0, when the main window is closed or the program is quit,
/// whatever else is open: settings are saved, movies that are not whole are taken away, nothing is
/// waited for. An interrupt, a hang-up or a termination ends it the same way, with 128 + the
/// signal as its status.
class WindowSession final : public QObject {
public:
    WindowSession(const WindowOptions& options, WindowLog& log);
    /// Never called: sessions end with the process.
    ~WindowSession() override = default;

    /// Shows the main window, wakes the interface's objects and runs the program to its end.
    /// `launched` is called when all that is to be seen at first is there.
    [[noreturn]] void run(const std::function<void()>& launched = {});

protected:
    /// Sees the main window close.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Parts;

    void launch();
    void rememberFolder(const std::string& path);
    void connectInterface();
    void tellThatNoCameraIsThere();
    void showMainWindow();
    /// What can wait until the user sees something. Once, however often it is called.
    void mainWindowIsDrawn();
    void showOtherWindows();
    /// Looking for cameras takes a moment in which nothing is drawn.
    void awaitDisplay();
    /// The last window in the interface that shows gets it.
    void takeKeyboard();
    void followAppearance();
    void keepAwakeWhileCapturing();
    void handleEndings();
    [[noreturn]] void end(int status);

    Parts& parts_;
};

} // namespace vistrane
