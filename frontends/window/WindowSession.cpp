#include "frontends/window/WindowSession.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <utility>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QMenu>
#include <QSlider>
#include <QStandardPaths>
#include <QTimer>
#include <QWindow>

#include "backends/qt/controls/PictureWidget.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/qt/controls/QtInterface.h"
#include "backends/qt/menus/CloseRequests.h"
#include "backends/qt/menus/QtApplication.h"
#include "backends/qt/menus/StatusIcon.h"
#include "backends/qt/system/Appearance.h"
#include "backends/qt/system/QtUserDefaults.h"
#include "backends/qt/system/QtWorkspace.h"
#include "backends/qt/system/SleepInhibitor.h"
#include "core/app/AppDelegate.h"
#include "core/folder/project_folder.h"
#include "core/infopanel/mantisQRXpanel.h"
#include "frontends/SessionBackend.h"
#include "frontends/window/WindowAppKit.h"
#include "frontends/window/WindowObserver.h"
#include "frontends/window/WindowPlace.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// Encoding has low priority, so that the window stays responsive.
MovieOptions movieOptions() {
    MovieOptions options;
    options.isLowPriority = true;
    return options;
}

/// How often to check whether the program captures, in seconds.
constexpr double captureCheckInterval = 1.0;

/// How often to show the time to the next still.
constexpr std::chrono::milliseconds signInterval{500};

/// How often to remember the settings for an ending without the main thread, in seconds.
constexpr double rememberInterval = 1.0;

/// How long to wait for the windows to be exposed.
constexpr std::chrono::milliseconds exposeTimeout{500};

CameraOptions cameraOptions(const WindowOptions& options) {
    CameraOptions result;
    result.demoCamera = options.demoCamera;
    result.demoBars = options.demoBars;
    return result;
}

} // namespace

/// The back end and the two objects, in the order of their dependencies.
struct WindowSession::Parts {
    Parts(const WindowOptions& options, WindowLog& theLog)
        : log(theLog), backend(loop, defaults, logLine, observer,
                               {options.version, cameraOptions(options), movieOptions()}) {
        defaults.setSystemString("AppleInterfaceStyle",
                                 [this] { return appearance.interfaceStyle(); });
    }

    /// The parent of dialogs: the active window, which gets the keyboard focus back afterwards.
    QWidget* dialogParent() {
        QWidget& main = interface.mainWindow();
        QWidget* const active = QApplication::activeWindow();
        const std::vector<QWidget*> windows = interface.windows();
        const bool isOwn = std::find(windows.begin(), windows.end(), active) != windows.end();
        QWidget& window = isOwn ? *active : main;
        return window.isVisible() && !window.isMinimized() ? &window : nullptr;
    }

    /// Where the folder dialog starts: in the project folder, otherwise among the user's videos.
    std::string folderOfDialog() const {
        const QString videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
        return chosenFolder(*controller.outfolderB)
            .value_or(QFileInfo(videos).isDir() ? QFile::encodeName(videos).toStdString() : "");
    }

    /// Tells of a complete movie, and where it is.
    void showMovie(const std::string& path, const std::string& leftOut) {
        const std::size_t slash = path.rfind('/');
        const std::string finished =
            "The movie '" + shownText(path.substr(slash + 1)) + "' is finished.";
        interface.messageBar().showMessage(
            {.text = leftOut.empty() ? finished : finished + " " + leftOut,
             .isWarning = !leftOut.empty(),
             .buttonTitle = "Show in Folder",
             .action = showsFolderOf(path)});
    }

    std::function<void()> showsFolderOf(const std::string& path) {
        return [this, folder = path.substr(0, path.rfind('/'))] {
            workspace.openURL(NSURL::fileURLWithPath(folder));
        };
    }

    void showUnopened(const std::string& sentence, const std::string& address) {
        if (QFileInfo(QFile::decodeName(address.c_str())).isFile()) {
            // A movie without a player. The message takes the place of that of its end.
            interface.messageBar().showMessage({.text = sentence,
                                                .buttonTitle = "Show in Folder",
                                                .action = showsFolderOf(address)});
            return;
        }
        interface.messageBar().showMessage(
            {.text = sentence, .buttonTitle = "Copy the Address", .action = [address] {
                 QGuiApplication::clipboard()->setText(QString::fromStdString(address));
             }});
    }

    /// The list of frames begins at the start of the program, if it knows the folder then.
    void showFirstSessionHint() {
        if (!controller.pictureArray.load() && !std::exchange(hasFirstSessionHint, true)) {
            interface.messageBar().showMessage(
                {.text = "Frames are being saved. Restart Vistrane to browse them.",
                 .isWarning = false});
        }
    }

    PictureWidget& cameraView() {
        return *interface.mainWindow().findChild<PictureWidget*>("previewView");
    }

    /// The sign of capturing tells of the stills since the timer of the moment was scheduled.
    void followCaptureTimer() {
        if (controller.myTimer != captureTimer) {
            captureTimer = controller.myTimer;
            observer.capture().begin();
        }
    }

    void showSignOfCapturing() {
        followCaptureTimer();
        const auto schedule = captureTimer ? loop.scheduleOf(*captureTimer) : std::nullopt;
        QString toolTip = QStringLiteral("Vistrane");
        if (schedule) {
            const CaptureReport::Text text = observer.capture().text(
                {schedule->interval, schedule->untilNext, loop.isHeldBack()});
            interface.sign().show(QString::fromStdString(text.status),
                                  QString::fromStdString(text.calmStatus),
                                  QString::fromStdString(text.warning));
            toolTip += QStringLiteral(": ") + interface.sign().text();
        } else {
            interface.sign().clear();
        }
        if (statusIcon) {
            statusIcon->setToolTip(toolTip);
        }
    }

    WindowLog& log;
    const std::function<void(const std::string&)> logLine = [this](const std::string& line) {
        log.write(line);
    };
    QtRunLoop loop;
    QtUserDefaults defaults{settingsPath(), logLine};
    Appearance appearance;
    SleepInhibitor sleepInhibitor{[this](const std::string& line) {
        log.write(line);
        interface.messageBar().showMessage({line});
    }};
    WindowObserver observer{
        logLine,
        loop,
        {.failure = [this](const std::string& text) { interface.messageBar().showMessage({text}); },
         .movie = [this](const std::string& path,
                         const std::string& leftOut) { showMovie(path, leftOut); },
         .camera =
             [this](const std::string& message) {
                 cameraView().setNotice(QString::fromStdString(vistrane::shownText(message)));
             },
         .still = [this] { followCaptureTimer(); },
         .savedFrame = [this] { showFirstSessionHint(); }}};
    SessionBackend backend;
    QtWorkspace workspace{[this](const std::string& path, Movies::Finished callback) {
                              return backend.movies.whenFinished(path, std::move(callback));
                          },
                          [this](const std::string& sentence, const std::string& address) {
                              log.write(sentence);
                              loop.mainQueue().async(
                                  [this, sentence, address] { showUnopened(sentence, address); });
                          }};
    QtResources resources;
    QtInterface interface { resources };
    std::unique_ptr<StatusIcon> statusIcon;
    QtApplication application{[this] { return statusIcon && statusIcon->isShown(); }};
    WindowAppKit appKit{application,
                        workspace,
                        std::make_shared<const QtDialogRules>(
                            QtDialogRules{loop, [this] { return dialogParent(); }, widgetOf,
                                          [this] { return folderOfDialog(); }}),
                        resources,
                        backend.pictures,
                        loop,
                        observer.leftOut()};
    std::unique_ptr<CloseRequests> closeRequests;
    const Platform platform = backend.platform(appKit);
    AppDelegate controller{platform};
    mantisQRXpanel panel{platform};
    /// The capture timer, as the sign of capturing knows it.
    std::shared_ptr<NSTimer> captureTimer;
    /// Qt's own, because those of the run loop do not tick while a dialog is open.
    QTimer signTimer;
    /// Of the player, while the user drags the frame slider.
    std::shared_ptr<NSTimer> heldTimer;
    /// `mainWindowIsDrawn` has run.
    bool isDrawn = false;
    bool hasFirstSessionHint = false;
    /// Whether the settings are restored. Before that, ending saves nothing.
    bool isLaunched = false;
    std::atomic<bool> isEnding{false};
    /// Whether nothing but movies that are being finished delays the end.
    std::atomic<bool> waitsForMovies{false};
};

namespace {

/// The session to end if Qt itself calls `exit`, for instance when the display disconnects.
WindowSession* running = nullptr;

} // namespace

WindowSession::WindowSession(const WindowOptions& options, WindowLog& log)
    : parts_(*new Parts(options, log)) {
    if (options.folder) {
        if (const auto error = parts_.backend.rememberFolder(*options.folder)) {
            log.fail(error->localizedDescription);
        }
    }
}

void WindowSession::launch() {
    handleEndings();
    followAppearance();
    connectInterface();
    showFailuresOfThreads();
    parts_.interface.setSmallWindowsHeldBack(true);
    // Before the window is shown, because a window manager may not remove a task-bar entry later.
    const bool isDockSettingStored = parts_.defaults.integerForKey("firstTime") == 1;
    if (isDockSettingStored) {
        parts_.panel.restoreDockSetting();
    }
    showMainWindow();
    // The controller runs the loop before it sets the controls, which draws the window.
    parts_.controller.awakeFromNib();
    parts_.panel.awakeFromNib();
    if (!isDockSettingStored) {
        parts_.panel.restoreDockSetting();
    }
    parts_.isLaunched = true;
    showOtherWindows();
    parts_.controller.applicationDidFinishLaunching();
    showNoCameraHint();
    keepAwakeWhileCapturing();
    showCapturing();
    rememberSettings();
    holdPlayerWhileScrubbing();
}

void WindowSession::run(const std::function<void()>& launched) {
    // Runs in the loop, so that a request to quit takes effect from now on.
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

void WindowSession::showNoCameraHint() {
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
    restorePlace(window, parts_.defaults);
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
    parts_.backend.cameras.prepare();
}

void WindowSession::showOtherWindows() {
    mainWindowIsDrawn(); // even if it was not: the window may be on another virtual desktop
    parts_.statusIcon = std::make_unique<StatusIcon>(
        parts_.interface.statusMenu(), QApplication::windowIcon(), "Vistrane",
        [this] { parts_.controller.realUnhide(&parts_.controller); });
    awaitDisplay();
    // Last, so that they are in front of the main window and can be placed relative to it.
    parts_.interface.setSmallWindowsHeldBack(false);
    awaitDisplay();
    if (QApplication::activeWindow() == nullptr) {
        // Some window managers do not activate a new window that has no task-bar entry.
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
    const auto limit = std::chrono::steady_clock::now() + exposeTimeout;
    while (!isExposed() && std::chrono::steady_clock::now() < limit) {
        parts_.loop.runUntilDate(parts_.backend.foundation.dateWithTimeIntervalSinceNow(0.01));
    }
    parts_.loop.runUntilDate(parts_.backend.foundation.date());
}

void WindowSession::followAppearance() {
    applyPalette(parts_.appearance.isDark());
    parts_.appearance.setChangeHandler([this] {
        applyPalette(parts_.appearance.isDark());
        parts_.backend.notificationCenter.post("AppleInterfaceThemeChangedNotification");
    });
}

/// A camera or a disk may hold up the main thread when a signal ends the process.
void WindowSession::rememberSettings() {
    parts_.loop.scheduleTimer(
        rememberInterval,
        [this](NSTimer&) {
            parts_.defaults.rehearse([this] {
                rememberPlace(parts_.interface.mainWindow(), parts_.defaults);
                parts_.panel.applicationShouldTerminateAfterLastWindowClosed();
                parts_.controller.userDefaultsSave();
            });
        },
        true);
}

void WindowSession::keepAwakeWhileCapturing() {
    parts_.loop.scheduleTimer(
        captureCheckInterval,
        [this](NSTimer&) {
            const std::shared_ptr<NSTimer>& timer = parts_.controller.myTimer;
            parts_.sleepInhibitor.setActive(timer && timer->isValid());
        },
        true);
}

void WindowSession::showCapturing() {
    QTimer& timer = parts_.signTimer;
    connect(&timer, &QTimer::timeout, this, [this] { parts_.showSignOfCapturing(); });
    timer.start(signInterval);
    // A camera that is picked is not the one that was lost.
    connect(parts_.interface.mainWindow().findChild<QComboBox*>("AVDevicePopUp"),
            &QComboBox::activated, this, [this] { parts_.cameraView().setNotice({}); });
}

/// The compile thread gives the button back when it ends. One that cannot be started never does.
void WindowSession::showFailuresOfThreads() {
    parts_.backend.foundation.setThreadFailureHandler([this] {
        parts_.controller.compilingB->setEnabled(true);
        parts_.interface.messageBar().showMessage(
            {"The movie cannot be made, because the system refuses another thread. Close some "
             "programs, then compile again."});
    });
}

/// While the user drags the frame slider, playback must not move it. The kit's run loop would hold
/// every timer back then; capturing and listing go on here.
void WindowSession::holdPlayerWhileScrubbing() {
    const QWidget& window = parts_.interface.mainWindow();
    const auto* slider = window.findChild<QSlider*>("photoSlider");
    const auto* play = window.findChild<QAbstractButton*>("previewPlayButton");
    const auto hold = [this, slider] {
        if (slider->isSliderDown() && parts_.controller.playTimer) {
            parts_.heldTimer = parts_.controller.playTimer;
            parts_.loop.setHeld(*parts_.heldTimer, true);
        }
    };
    connect(slider, &QSlider::sliderPressed, this, hold);
    connect(play, &QAbstractButton::clicked, this, hold); // the keyboard may start the player
    connect(slider, &QSlider::sliderReleased, this, [this] {
        if (const auto timer = std::exchange(parts_.heldTimer, nullptr)) {
            parts_.loop.setHeld(*timer, false);
        }
    });
}

void WindowSession::handleEndings() {
    running = this;
    std::atexit([] { running->end(1); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { end(0); });
    parts_.backend.handleSignals(
        {.end = [this](int status) { end(status); },
         .isEnding = [this] { return parts_.isEnding && !parts_.waitsForMovies; },
         .saveSettings =
             [this] {
                 if (!parts_.isEnding) {
                     parts_.defaults.saveRemembered();
                 }
             },
         .cleanUp = [this] { parts_.log.flush(); }});
}

bool WindowSession::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == &parts_.interface.mainWindow()) {
        end(0);
    }
    if (event->type() == QEvent::WindowBlocked) {
        // A modal alert takes the mouse: the slider would never be released.
        parts_.interface.mainWindow().findChild<QSlider*>("photoSlider")->setSliderDown(false);
    }
    if (event->type() == QEvent::Expose) {
        // Queued, so that the window is drawn first.
        watched->removeEventFilter(this);
        parts_.loop.mainQueue().async([this] { mainWindowIsDrawn(); });
    }
    return QObject::eventFilter(watched, event);
}

void WindowSession::end(int status) {
    // These calls may process events that end the program recursively.
    if (!parts_.isEnding.exchange(true) && parts_.isLaunched) {
        rememberPlace(parts_.interface.mainWindow(), parts_.defaults);
        // Both save their settings here. Their result is always true.
        parts_.panel.applicationShouldTerminateAfterLastWindowClosed();
        parts_.controller.applicationShouldTerminateAfterLastWindowClosed();
        parts_.controller.applicationWillTerminate();
    }
    const bool isDisplayGone = status == 1;
    if (!isDisplayGone) {
        // Finishing a movie may take a while.
        for (QWidget* window : parts_.interface.windows()) {
            window->hide();
        }
        QGuiApplication::sync();
    }
    parts_.waitsForMovies = true;
    parts_.backend.endMovies(status);
    parts_.log.flush();
    // Other threads may still be running, so nothing is destroyed.
    std::_Exit(status);
}

} // namespace vistrane
