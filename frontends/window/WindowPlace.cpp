#include "frontends/window/WindowPlace.h"

#include <algorithm>

#include <QGuiApplication>
#include <QScreen>

#include "backends/qt/controls/QtInterface.h"

namespace vistrane {

namespace {

// Numbers of our own, because QWidget::saveGeometry() stores the place of the contents: windows
// move by the size of their frame at each start.
constexpr char leftKey[] = "windowLeft";
constexpr char topKey[] = "windowTop";
constexpr char widthKey[] = "windowWidth";
constexpr char heightKey[] = "windowHeight";
constexpr char maximisedKey[] = "windowIsMaximised";

/// The position with the frame, the size without it.
QRect storedPlace(const NSUserDefaults& defaults) {
    const auto number = [&](const char* key) {
        constexpr NSInteger most = QWIDGETSIZE_MAX;
        return static_cast<int>(std::clamp(defaults.integerForKey(key), -most, most));
    };
    return {number(leftKey), number(topKey), number(widthKey), number(heightKey)};
}

} // namespace

void restorePlace(QWidget& window, const NSUserDefaults& defaults) {
    const QRect stored = storedPlace(defaults);
    const QScreen* const screen = QGuiApplication::screenAt(stored.center());
    const bool isKnown = !stored.isEmpty() && screen != nullptr;
    const QRect room = (isKnown ? screen : window.screen())->availableGeometry();
    const QSize most = room.size() - QtInterface::frameAllowance;
    window.resize((isKnown ? stored.size() : window.size()).boundedTo(most));
    if (isKnown) {
        const QRect framed(stored.topLeft(), window.size() + QtInterface::frameAllowance);
        window.move(
            std::max(room.left(), std::min(framed.left(), room.right() - framed.width() + 1)),
            std::max(room.top(), std::min(framed.top(), room.bottom() - framed.height() + 1)));
    }
    if (defaults.integerForKey(maximisedKey) == 1) {
        window.setWindowState(Qt::WindowMaximized);
    }
}

void rememberPlace(const QWidget& window, NSUserDefaults& defaults) {
    if (window.isMinimized()) {
        return;
    }
    const bool fillsScreen = window.isMaximized() || window.isFullScreen();
    defaults.setInteger(fillsScreen ? 1 : 0, maximisedKey);
    if (!fillsScreen) {
        defaults.setInteger(window.x(), leftKey);
        defaults.setInteger(window.y(), topKey);
        defaults.setInteger(window.width(), widthKey);
        defaults.setInteger(window.height(), heightKey);
    }
}

} // namespace vistrane
