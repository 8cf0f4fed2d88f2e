#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "platform/appkit/NSApplication.h"

namespace vistrane {

class HiddenMenuBar;

/// The program as the desktop sees it, on the QApplication, which outlives it.
///
/// As an accessory the program has no menu bar and, on X11, no task-bar entry; Wayland has no
/// request for that. Switching does not move, resize or restack windows. A minimised window keeps
/// its task-bar entry if no status icon can restore it.
class QtApplication final : public QObject, public NSApplication {
public:
    /// `hasStatusIcon` returns whether the desktop shows the program's status icon.
    explicit QtApplication(std::function<bool()> hasStatusIcon);
    ~QtApplication() override;

    /// The window that comes to the front when the program is activated while none of its windows
    /// is active. Null: none.
    void setMainWindow(QWidget* window);

    /// Shows a window in front of the others, even if it is minimised, and requests the keyboard
    /// focus for it. The window system answers later; until then the window counts as active.
    static void orderFront(QWidget& window);

    /// Minimises each visible window that has a minimise button.
    void miniaturizeAll(NSObject* sender) override;

    /// Also applies to windows that are shown later. Returns false if the window system cannot take
    /// windows out of the task bar; the menu bar is hidden anyway.
    bool setActivationPolicy(NSApplicationActivationPolicy policy) override;

    /// Brings the main window and then the active one to the front, if the window system allows it.
    /// Minimised and hidden windows stay as they are.
    void activateIgnoringOtherApps(bool ignoring) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* activeWindow() const;
    void applyToTaskBar(QWidget& window) const;
    void applyToMenuBars(QWidget& window);
    void forgetClosedMenuBars();

    std::function<bool()> hasStatusIcon_;
    QPointer<QWidget> mainWindow_;
    /// The window whose activation was requested last; null once a window has become active.
    QPointer<QWidget> nextActive_;
    NSApplicationActivationPolicy policy_ = NSApplicationActivationPolicyRegular;
    std::vector<std::unique_ptr<HiddenMenuBar>> hiddenMenuBars_;
};

} // namespace vistrane
