#include "frontends/window/WindowSession.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QMenu>
#include <QWindow>

#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/posix/EndingSignals.h"
#include "backends/posix/FileUserDefaults.h"
#include "backends/posix/clock.h"
#include "backends/posix/threads.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/qt/controls/QtInterface.h"
#include "backends/qt/menus/QtApplication.h"
#include "backends/qt/menus/StatusIcon.h"
#include "backends/qt/system/Appearance.h"
#include "backends/qt/system/CloseRequests.h"
#include "backends/qt/system/QtDispatch.h"
#include "backends/qt/system/QtFoundation.h"
#include "backends/qt/system/QtWorkspace.h"
#include "backends/qt/system/SleepInhibitor.h"
#include "core/app/AppDelegate.h"
#include "core/infopanel/mantisQRXpanel.h"
#include "frontends/MediaAVFoundation.h"
#include "frontends/window/WindowAppKit.h"
#include "frontends/window/WindowObserver.h"

namespace vistrane {

namespace {

/// Whatever is compiled, the window answers.
MovieOptions optionsOfMovies() {
    MovieOptions options;
    options.givesWay = true;
    return options;
}

/// How often capturing is looked at, in seconds: how long the machine may stay awake too long.
constexpr double captureLook = 1.0;

/// How long the start waits for the main window to be seen before it looks for cameras.
constexpr double patienceForDisplay = 0.5;

CameraOptions cameraOptions(const WindowOptions& options) {
    CameraOptions result;
    result.demoCamera = options.demoCamera;
    return result;
}

} // namespace

/// The backend and the two objects, in the order in which they need each other.
struct WindowSession::Parts {
    Parts(const WindowOptions& options, WindowLog& theLog)
        : log(theLog), cameras(dispatch, observer, cameraOptions(options)),
          foundation(loop, defaults, notificationCenter, logLine, options.version) {
        defaults.setSystemString("AppleInterfaceStyle",
                                 [this] { return appearance.interfaceStyle(); });
    }

    /// The window that dialogs belong to: the one in use, to which the keyboard then returns.
    QWidget* dialogParent() {
        QWidget& main = interface.mainWindow();
        QWidget* const active = QApplication::activeWindow();
        const std::vector<QWidget*> windows = interface.windows();
        const bool isOwn = std::find(windows.begin(), windows.end(), active) != windows.end();
        QWidget& window = isOwn ? *active : main;
        return window.isVisible() && !window.isMinimized() ? &window : nullptr;
    }

    /// The main thread is held up. If it is about to end the process, only its camera or disk is
    /// slow, and the settings are still to be saved: it has its time. A frame that it is just
    /// writing is waited for, and movies that are not whole are taken away, neither of them for
    /// ever: the folder's disk may not answer.
    [[noreturn]] void endWithoutMainThread(int status) {
        startDetachedThread([status] {
            std::this_thread::sleep_for(std::chrono::seconds(5));
            std::_Exit(status);
        });
        while (isEnding) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        while (observer.isWritingFile()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        movies.abandonAll();
        std::_Exit(status);
    }

    WindowLog& log;
    const std::function<void(const std::string&)> logLine = [this](const std::string& line) {
        log.write(line);
    };
    QtRunLoop loop;
    QtDispatch dispatch{loop};
    FileUserDefaults defaults{settingsPath(), logLine};
    NotificationCenter notificationCenter;
    Appearance appearance;
    SleepInhibitor sleepInhibitor{logLine};
    WindowObserver observer{log};
    Pictures pictures{observer};
    MediaCoreVideo coreVideo;
    MediaCoreGraphics coreGraphics{coreVideo};
    Cameras cameras;
    Movies movies{observer, optionsOfMovies()};
    MediaAVFoundation avFoundation{cameras, movies};
    QtFoundation foundation;
    QtWorkspace workspace{[this](const std::string& path, Movies::Finished callback) {
                              return movies.whenFinished(path, std::move(callback));
                          },
                          logLine};
    QtResources resources;
    QtInterface interface { resources };
    std::unique_ptr<StatusIcon> statusIcon;
    QtApplication application{[this] { return statusIcon && statusIcon->isShown(); }};
    WindowAppKit appKit{application, workspace,
                        std::make_shared<const QtDialogRules>(
                            QtDialogRules{loop, [this] { return dialogParent(); }, widgetOf}),
                        resources, pictures};
    std::unique_ptr<CloseRequests> closeRequests;
    const Platform platform{foundation, appKit, avFoundation, coreVideo, coreGraphics, dispatch};
    AppDelegate controller{platform};
    mantisQRXpanel panel{platform};
    /// What waited for the main window to be drawn is done.
    bool isDrawn = false;
    /// Shared with who ends the process: the settings are restored and may be saved.
    bool isLaunched = false;
    std::atomic<bool> isEnding{false};
};

namespace {

/// The session for an end that Qt brings about by itself, for instance when its display is gone.
WindowSession* running = nullptr;

} // namespace

WindowSession::WindowSession(const WindowOptions& options, WindowLog& log)
    : parts_(*new Parts(options, log)) {
    if (options.folder) {
        rememberFolder(*options.folder);
    }
}

void WindowSession::rememberFolder(const std::string& path) {
    const BookmarkDataResult bookmark = parts_.foundation.bookmarkDataWithOptions(
        NSURL::fileURLWithPath(path), NSURLBookmarkCreationWithSecurityScope);
    if (bookmark.error) {
        parts_.log.fail(bookmark.error->localizedDescription);
    }
    parts_.defaults.setObject(bookmark.data, "iData");
    parts_.defaults.synchronize();
}

void WindowSession::launch() {
    handleEndings();
    followAppearance();
    connectInterface();
    parts_.interface.holdSmallWindows();
    // A window without a task-bar entry never has one.
    const bool isDockSettingStored = parts_.defaults.integerForKey("firstTime") == 1;
    if (isDockSettingStored) {
        parts_.panel.restoreDockSetting();
    }
    showMainWindow();
    // The controller lets the loop run before it sets the controls: the window is drawn meanwhile.
    parts_.controller.awakeFromNib();
    parts_.panel.awakeFromNib();
    if (!isDockSettingStored) {
        parts_.panel.restoreDockSetting();
    }
    // The settings are in the controls now.
    parts_.isLaunched = true;
    showOtherWindows();
    parts_.controller.applicationDidFinishLaunching();
    tellThatNoCameraIsThere();
    keepAwakeWhileCapturing();
}

void WindowSession::run(const std::function<void()>& launched) {
    // Within the loop: to be told to quit counts from now on.
    parts_.loop.mainQueue().async([this, &launched] {
        launch();
        if (launched) {
            launched();
        }
    });
    QApplication::exec();
    end(0);
}

void WindowSession::connectInterface() {
    std::vector<std::string> missing =
        parts_.controller.connectInterface(parts_.interface.nib("AppDelegate"));
    if (missing.empty()) {
        missing = parts_.panel.connectInterface(parts_.interface.nib("mantisQRXpanel"));
    }
    if (!missing.empty()) {
        parts_.log.fail("The interface has no control '" + missing.front() + "'.");
    }
}

void WindowSession::tellThatNoCameraIsThere() {
    if (!parts_.controller.allAVdevices.empty()) {
        return;
    }
    for (QWidget* view : parts_.interface.mainWindow().findChildren<QWidget*>()) {
        const QVariant hint = view->property("hintWithoutCameras");
        if (hint.isValid()) {
            view->setProperty("hint", hint);
            view->setAccessibleDescription(hint.toString());
            view->update();
        }
    }
}

void WindowSession::showMainWindow() {
    QWidget& window = parts_.interface.mainWindow();
    parts_.application.setMainWindow(&window);
    window.installEventFilter(this);
    parts_.closeRequests = std::make_unique<CloseRequests>(window, [this] { end(0); });
    window.show();
    window.windowHandle()->installEventFilter(this);
}

void WindowSession::mainWindowIsDrawn() {
    if (std::exchange(parts_.isDrawn, true)) {
        return;
    }
    if (const std::shared_ptr<NSImage> icon = parts_.resources.imageNamed("vistrane")) {
        QApplication::setWindowIcon(iconOf(*icon));
    }
    parts_.cameras.prepare();
}

void WindowSession::showOtherWindows() {
    mainWindowIsDrawn(); // At the latest: it may be on a desktop that is not seen.
    parts_.statusIcon = std::make_unique<StatusIcon>(
        parts_.interface.statusMenu(), QApplication::windowIcon(), "Vistrane",
        [this] { parts_.controller.realUnhide(&parts_.controller); });
    awaitDisplay();
    // Only now: what appears last is in front, and the main window's place is known.
    parts_.interface.releaseSmallWindows();
    awaitDisplay();
    if (QApplication::activeWindow() == nullptr) {
        // Some window managers do not give the keyboard to a new window that has no task-bar entry.
        takeKeyboard();
    }
}

void WindowSession::takeKeyboard() {
    for (QWidget* window : parts_.interface.windows()) {
        if (window->isVisible()) {
            window->activateWindow();
        }
    }
}

void WindowSession::awaitDisplay() {
    const auto isExposed = [this] {
        const std::vector<QWidget*> windows = parts_.interface.windows();
        return std::all_of(windows.begin(), windows.end(), [](const QWidget* window) {
            return !window->isVisible() || window->windowHandle()->isExposed();
        });
    };
    const double limit = wallClockNow().timeIntervalSince1970 + patienceForDisplay;
    while (!isExposed() && wallClockNow().timeIntervalSince1970 < limit) {
        parts_.loop.runUntilDate(parts_.foundation.dateWithTimeIntervalSinceNow(0.01));
    }
    parts_.loop.runUntilDate(parts_.foundation.date());
}

void WindowSession::followAppearance() {
    applyPalette(parts_.appearance.isDark());
    parts_.appearance.setChangeHandler([this] {
        applyPalette(parts_.appearance.isDark());
        parts_.notificationCenter.post("AppleInterfaceThemeChangedNotification");
    });
}

void WindowSession::keepAwakeWhileCapturing() {
    parts_.loop.scheduleTimer(
        captureLook,
        [this](NSTimer&) {
            const std::shared_ptr<NSTimer>& timer = parts_.controller.myTimer;
            parts_.sleepInhibitor.setActive(timer && timer->isValid());
        },
        true);
}

void WindowSession::handleEndings() {
    running = this;
    std::atexit([] { running->end(1); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { end(0); });
    EndingSignals::handle(
        {[this](int status) { parts_.loop.mainQueue().async([this, status] { end(status); }); },
         [this](int status) { parts_.endWithoutMainThread(status); }});
}

bool WindowSession::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == &parts_.interface.mainWindow()) {
        end(0);
    }
    if (event->type() == QEvent::Expose) {
        // Its drawing comes first.
        watched->removeEventFilter(this);
        parts_.loop.mainQueue().async([this] { mainWindowIsDrawn(); });
    }
    return QObject::eventFilter(watched, event);
}

void WindowSession::end(int status) {
    // What is done here may run events that end the program once more.
    if (!parts_.isEnding.exchange(true) && parts_.isLaunched) {
        // Either may have something to save; neither has ever said no.
        parts_.panel.applicationShouldTerminateAfterLastWindowClosed();
        parts_.controller.applicationShouldTerminateAfterLastWindowClosed();
        parts_.controller.applicationWillTerminate();
    }
    parts_.movies.abandonAll();
    parts_.log.flush();
    // Threads may still be at work, so nothing is taken apart.
    std::_Exit(status);
}

} // namespace vistrane
