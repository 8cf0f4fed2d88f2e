#pragma once

#include <QWidget>

#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// Gives a window that is not shown yet the size and place of the last time, if they are stored and
/// still on a screen. Otherwise it keeps its size, or gets the screen's if that is smaller. Main
/// thread.
void restorePlace(QWidget& window, const NSUserDefaults& defaults);

/// Stores the window's size and place, but does not synchronise. Of a maximised window, stores that
/// it is maximised; a minimised one changes nothing.
void rememberPlace(const QWidget& window, NSUserDefaults& defaults);

} // namespace vistrane
