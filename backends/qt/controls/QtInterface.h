#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QMenu>
#include <QSize>
#include <QWidget>

#include "backends/qt/controls/MessageBar.h"
#include "backends/qt/controls/QtResources.h"
#include "backends/qt/controls/SignWidget.h"
#include "platform/appkit/NSNib.h"

namespace vistrane {

/// The loaded interface files: the windows with their controls and menus, initially hidden. Main
/// thread only. Needs the QApplication, and outlives the objects that it connects.
///
/// An outlet is the control with that object name. The property "action" is the selector that a
/// control or menu item sends. Further properties:
///
///     clicks        menu item: clicks the button of that name instead, and is enabled with it
///     opens         menu item: shows the window of that name
///     inStatusMenu  menu item: also in the status icon's menu
///     inContextMenu menu item: also in the main window's context menu
///     cellClass     slider: a cell of that class draws it
///     numberOfTickMarks  slider with a cell: the number of its ticks
///     delegate      window: the object that receives "windowWillClose:"
///     image         view: the name of its initial picture
///     hint          view: its text until the first picture
///     hintWithoutCameras   the same, if there is no camera
class QtInterface {
public:
    /// What a window leaves free on a small screen, for a title bar and borders.
    static constexpr QSize frameAllowance{16, 48};

    explicit QtInterface(const QtResources& resources);
    ~QtInterface();
    QtInterface(const QtInterface&) = delete;
    QtInterface& operator=(const QtInterface&) = delete;

    /// The nib of "AppDelegate" or "mantisQRXpanel". There are no others.
    NSNib& nib(const std::string& objectName);

    QWidget& mainWindow();
    /// Of the main window.
    MessageBar& messageBar();
    /// Of the main window.
    SignWidget& sign();
    /// The main window, the info panel and the tips. They are independent: the latter two stay on
    /// the screen while the main window is minimised. They first appear centred on it.
    std::vector<QWidget*> windows();

    /// Delays showing the small windows, which `awakeFromNib` of the objects may request. At the
    /// end of the delay, the requested ones are shown in front of the main window.
    void setSmallWindowsHeldBack(bool areHeldBack);

    /// The menu of the icon in the desktop's status area.
    QMenu& statusMenu();

private:
    class Windows;
    class Connector;

    std::unique_ptr<Windows> windows_;
    std::unique_ptr<Connector> connector_;
};

} // namespace vistrane
