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
/// Main thread only; needs the QApplication, and outlives what it was connected with.
///
/// An outlet is the control of that object name. What a control or a menu item sends is its
/// property "action", a selector. Further properties:
///
///     clicks        menu item: clicks the button of that name instead, and is enabled with it
///     opens         menu item: shows the window of that name
///     inStatusMenu  menu item: also in the status icon's menu
///     inContextMenu menu item: also in the main window's context menu
///     cellClass     slider: is drawn by a cell of that class
///     numberOfTickMarks  such a slider: how many its cell is asked about
///     delegate      window: the object that is told "windowWillClose:"
///     image         view: the name of the picture that it shows at first
///     hint          view: what it says until there is a first picture
///     hintWithoutCameras   the same, when there is no camera to get one from
class QtInterface {
public:
    explicit QtInterface(const QtResources& resources);
    ~QtInterface();
    QtInterface(const QtInterface&) = delete;
    QtInterface& operator=(const QtInterface&) = delete;

    /// What there is for "AppDelegate" or "mantisQRXpanel". No other names.
    NSNib& nib(const std::string& objectName);

    QWidget& mainWindow();
    /// The main window, the info panel and the tips. Each stands for itself: the latter two can be
    /// on the screen while the main window is minimised, and first appear in its middle.
    std::vector<QWidget*> windows();

    /// Keeps the small windows off the screen that the objects show while they awake.
    void holdSmallWindows();
    /// Shows those, in front of the main window.
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
