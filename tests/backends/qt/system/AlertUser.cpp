#include "tests/backends/qt/system/AlertUser.h"

#include <utility>

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QPushButton>
#include <gtest/gtest.h>

namespace vistrane {

QDialog* openAlert() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "alert" && window->isVisible()) {
            return qobject_cast<QDialog*>(window);
        }
    }
    return nullptr;
}

void pressKey(QDialog& dialog, Qt::Key key) {
    // The widget that gets the keys when the window is active.
    QWidget* const focused = dialog.focusWidget() != nullptr ? dialog.focusWidget() : &dialog;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(focused, &event);
    }
}

AlertUser::AlertUser() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
}

void AlertUser::withNext(double seconds, std::function<void(QDialog&)> act) {
    seconds_ = seconds;
    act_ = std::move(act);
    timer_.start(1);
}

void AlertUser::pressButton(int button, double seconds) {
    withNext(seconds, [button](QDialog& dialog) {
        auto* const found = dialog.findChild<QPushButton*>("button" + QString::number(button));
        ASSERT_NE(found, nullptr);
        found->click();
    });
}

void AlertUser::look() {
    const QPointer<QDialog> dialog = openAlert();
    if (!dialog) {
        return;
    }
    timer_.stop();
    QTimer::singleShot(static_cast<int>(seconds_ * 1000.0), dialog,
                       [dialog, act = std::exchange(act_, nullptr)] { act(*dialog); });
}

} // namespace vistrane
