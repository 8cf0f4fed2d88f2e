#pragma once

#include <stdexcept>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QWidget>

#include "backends/qt/controls/QtInterface.h"

namespace vistrane {

/// A window of the interface, or an object in one, by its name.
template <typename Object>
Object& named(QtInterface& interface, const char* name) {
    for (QWidget* window : interface.windows()) {
        auto* const own = dynamic_cast<Object*>(window);
        if (own != nullptr && own->objectName() == QLatin1String(name)) {
            return *own;
        }
        if (auto* const child = window->findChild<Object*>(name)) {
            return *child;
        }
    }
    throw std::out_of_range(name);
}

/// Opens the main window's context menu. Null if there is none.
inline QMenu* openContextMenu(QtInterface& interface) {
    auto& place = named<QWidget>(interface, "centralWidget");
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(3, 3),
                            place.mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(&place, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

} // namespace vistrane
