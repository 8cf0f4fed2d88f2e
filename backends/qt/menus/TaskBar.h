#pragma once

class QWindow;

namespace vistrane {

/// Whether windows can be taken out of the task bar. True without a desktop.
bool canLeaveTaskBar();

/// Takes a window, shown or not, out of the desktop's task bar and pager, or puts it back. Must be
/// repeated when a hidden window is shown. Does nothing where that is impossible.
void setInTaskBar(QWindow& window, bool shown);

} // namespace vistrane
