#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QWidget>

#include "backends/qt/controls/QtResources.h"
#include "platform/appkit/NSNib.h"

namespace vistrane {

/// The interface files, loaded: the windows with their controls and menus, none of them shown yet.
/// Main thread only. Needs the QApplication, and outlives the objects that it connects.
///
/// An outlet is the control of that object name. What a control or a menu item sends is its
/// property "action", a selector. Further properties:
///
///     clicks        menu item: clicks the button of that name instead, and is enabled with it
///     opens         menu item: shows the window of that name
///     inStatusMenu  menu item: also in the status icon's menu
///     inContextMenu menu item: also in the main window's context menu
///     cellClass     slider: a cell of that class draws it
///     numberOfTickMarks  such a slider: how many ticks its cell has
///     delegate      window: the object that is told "windowWillClose:"
///     image         view: the name of its initial picture
///     hint          view: its text until the first picture
///     hintWithoutCameras   the same, when there is no camera
class QtInterface {
public:
    explicit QtInterface(const QtResources& resources);
    ~QtInterface();
    QtInterface(const QtInterface&) = delete;
    QtInterface& operator=(const QtInterface&) = delete;

    /// What there is for "AppDelegate" or "mantisQRXpanel". No other names.
    NSNib& nib(const std::string& objectName);

    QWidget& mainWindow();
    /// The main window, the info panel and the tips. They are independent: the latter two stay on
    /// the screen while the main window is minimised. They first appear centred on it.
    std::vector<QWidget*> windows();

    /// Delays showing the small windows, which the objects may request while they awake.
    void holdSmallWindows();
    /// Shows those that were requested, in front of the main window.
    void releaseSmallWindows();

    /// Of the icon in the desktop's status area.
    QMenu& statusMenu();

private:
    class Windows;
    class Connector;

    std::unique_ptr<Windows> windows_;
    std::unique_ptr<Connector> connector_;
};

} // namespace vistrane
