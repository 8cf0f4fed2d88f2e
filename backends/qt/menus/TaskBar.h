#pragma once

class QWindow;

namespace vistrane {

/// Whether windows can be taken out of the task bar here. True where there is no desktop at all.
bool canLeaveTaskBar();

/// Takes a window out of the desktop's task bar and pager or puts it back, shown or not. A window
/// that is hidden must be told again when it is next shown. Does nothing where that cannot be.
void setInTaskBar(QWindow& window, bool shown);

} // namespace vistrane
