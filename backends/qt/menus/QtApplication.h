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

/// The program as its desktop sees it, over the QApplication, which outlives it.
///
/// As an accessory the program has no task-bar entry, on X11, and no menu bar; no window moves,
/// changes its size or its place in the stack for that. Wayland has no way to ask for the former.
/// A window that is minimised keeps its task-bar entry where no status icon could bring it back:
/// nothing else would.
class QtApplication final : public QObject, public NSApplication {
public:
    /// `hasStatusIcon` tells whether the desktop shows the program's status icon.
    explicit QtApplication(std::function<bool()> hasStatusIcon);
    ~QtApplication() override;

    /// The window that comes to the front when the program is activated and none of its windows
    /// is active. Null for none.
    void setMainWindow(QWidget* window);

    /// Shows a window in front of the others and asks for the keyboard, also when it is minimised.
    /// The window system answers later; until then that window counts as the active one.
    static void orderFront(QWidget& window);

    /// Minimises each window that is shown and has a minimise button.
    void miniaturizeAll(NSObject* sender) override;

    /// Holds for windows that are shown later as well. False where the window system cannot take
    /// windows out of the task bar; the menu bar goes all the same.
    bool setActivationPolicy(NSApplicationActivationPolicy policy) override;

    /// Brings the main window and then the active one to the front, as far as the window system
    /// lets a program do that. Minimised and hidden windows stay so. With `ignoring` off, only
    /// asks for the user's attention.
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
    /// What was asked to become active since a window last became so.
    QPointer<QWidget> nextActive_;
    NSApplicationActivationPolicy policy_ = NSApplicationActivationPolicyRegular;
    std::vector<std::unique_ptr<HiddenMenuBar>> hiddenMenuBars_;
};

} // namespace vistrane
