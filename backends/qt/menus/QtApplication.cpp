#include "backends/qt/menus/QtApplication.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QMenuBar>
#include <QVariant>
#include <QWindow>

#include "backends/qt/menus/HiddenMenuBar.h"
#include "backends/qt/menus/TaskBar.h"

namespace vistrane {

namespace {

/// Marks the native windows that this class took out of the task bar. Only these may be put back:
/// others are absent for other reasons.
constexpr const char* outOfTaskBar = "vistraneOutOfTaskBar";

/// Excludes menus, tool tips, drop-down lists and the embedded window of a status icon.
bool isDesktopWindow(const QWidget& widget) {
    return widget.isWindow() &&
           (widget.windowType() == Qt::Window || widget.windowType() == Qt::Dialog) &&
           !widget.windowFlags().testFlag(Qt::BypassWindowManagerHint);
}

QList<QWidget*> desktopWindows() {
    QList<QWidget*> windows;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (isDesktopWindow(*widget)) {
            windows.append(widget);
        }
    }
    return windows;
}

/// Sent to a window whose activation is requested.
QEvent::Type activationAsked() {
    static const int type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
}

bool isOnScreen(const QWidget* window) {
    return window != nullptr && window->isVisible() && !window->isMinimized();
}

} // namespace

QtApplication::QtApplication(std::function<bool()> hasStatusIcon)
    : hasStatusIcon_(std::move(hasStatusIcon)) {
    qApp->installEventFilter(this);
}

QtApplication::~QtApplication() = default;

void QtApplication::setMainWindow(QWidget* window) {
    mainWindow_ = window;
}

void QtApplication::orderFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    QEvent asked(activationAsked());
    QCoreApplication::sendEvent(&window, &asked);
}

void QtApplication::miniaturizeAll(NSObject* /*sender*/) {
    for (QWidget* const window : desktopWindows()) {
        if (isOnScreen(window) && window->windowFlags().testFlag(Qt::WindowMinimizeButtonHint)) {
            window->showMinimized();
        }
    }
}

bool QtApplication::setActivationPolicy(NSApplicationActivationPolicy policy) {
    policy_ = policy;
    if (policy == NSApplicationActivationPolicyRegular) {
        hiddenMenuBars_.clear();
    }
    for (QWidget* const window : desktopWindows()) {
        applyToTaskBar(*window);
        applyToMenuBars(*window);
    }
    return policy == NSApplicationActivationPolicyRegular || canLeaveTaskBar();
}

void QtApplication::activateIgnoringOtherApps(bool) {
    QWidget* const active = activeWindow();
    QWidget* const front = isOnScreen(active) ? active : mainWindow_.data();
    if (!isOnScreen(front)) {
        return;
    }
    if (front != mainWindow_ && isOnScreen(mainWindow_)) {
        mainWindow_->raise();
    }
    front->raise();
    front->activateWindow();
}

QWidget* QtApplication::activeWindow() const {
    return isOnScreen(nextActive_) ? nextActive_.data() : QApplication::activeWindow();
}

bool QtApplication::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == activationAsked()) {
        nextActive_ = static_cast<QWidget*>(watched);
    } else if (event->type() == QEvent::WindowActivate && watched->isWidgetType()) {
        nextActive_.clear();
    }
    // A window manager forgets the states of a hidden window, so they are set before each show.
    if ((event->type() == QEvent::Show || event->type() == QEvent::WindowStateChange) &&
        watched->isWidgetType()) {
        auto& widget = static_cast<QWidget&>(*watched);
        if (isDesktopWindow(widget)) {
            applyToTaskBar(widget);
            applyToMenuBars(widget);
        }
    }
    return QObject::eventFilter(watched, event);
}

void QtApplication::applyToTaskBar(QWidget& window) const {
    QWindow* const native = window.windowHandle();
    if (native == nullptr) {
        return;
    }
    const bool isLost = window.isMinimized() && !(hasStatusIcon_ && hasStatusIcon_());
    const bool leaves = policy_ == NSApplicationActivationPolicyAccessory && !isLost;
    if (leaves || native->property(outOfTaskBar).toBool()) {
        setInTaskBar(*native, !leaves);
        native->setProperty(outOfTaskBar, leaves);
    }
}

void QtApplication::applyToMenuBars(QWidget& window) {
    if (policy_ != NSApplicationActivationPolicyAccessory) {
        return;
    }
    forgetClosedMenuBars();
    for (QMenuBar* const menuBar : window.findChildren<QMenuBar*>()) {
        const bool isKnown =
            std::any_of(hiddenMenuBars_.begin(), hiddenMenuBars_.end(),
                        [&](const auto& one) { return one->menuBar() == menuBar; });
        if (!isKnown) {
            hiddenMenuBars_.push_back(std::make_unique<HiddenMenuBar>(*menuBar));
        }
    }
}

void QtApplication::forgetClosedMenuBars() {
    hiddenMenuBars_.erase(std::remove_if(hiddenMenuBars_.begin(), hiddenMenuBars_.end(),
                                         [](const auto& one) { return one->menuBar() == nullptr; }),
                          hiddenMenuBars_.end());
}

} // namespace vistrane
