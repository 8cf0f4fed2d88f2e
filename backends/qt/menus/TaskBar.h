#pragma once

class QWindow;

namespace vistrane {

/// Whether windows can be taken out of the task bar. True if there is no desktop.
bool canLeaveTaskBar();

/// Takes a window, visible or not, out of the desktop's task bar and pager, or puts it back. Repeat
/// it when a hidden window is shown. Does nothing if that is impossible.
void setInTaskBar(QWindow& window, bool shown);

} // namespace vistrane
