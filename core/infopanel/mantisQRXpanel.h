#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSPanel.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWindow.h"
#include "platform/platform.h"

namespace vistrane {

class NSNib;
class NSUserDefaults;

/// The info panel: version, tips, links, mails and the Dock switch. It shares nothing with the
/// controller but the user's settings.
///
/// Contents
///   fields ............. who fills them
///   set-up ............. infopanel/set_up.cpp
///   tips ............... infopanel/tips.cpp, the pages in infopanel/tip_pages.cpp
///   promotion menus .... infopanel/promotion_menus.cpp, their table in infopanel/promotions.cpp
///   dock icon .......... infopanel/dock.cpp
///   auto-start hint .... infopanel/autostart.cpp
///   links .............. infopanel/links.cpp, the addresses in infopanel/promotions.cpp
///   mails .............. infopanel/mails.cpp
///
/// Main thread only. The panel lives as long as the process, so it outlives its menus and queued
/// work. Actions ignore their sender, except `excuteMyPromo`.
///
/// Several names are misspelled on purpose: they are part of the interface.
class mantisQRXpanel : public NSPanel {
public:
    explicit mantisQRXpanel(const Platform& platform);

    // ---- Outlets: filled from the interface file, never replaced ------------------------------
    // Each gets a submenu: S and M with pictures, D without.
    std::shared_ptr<NSMenuItem> mantisSubmenuS;
    std::shared_ptr<NSMenuItem> mantisSubmenuD;
    std::shared_ptr<NSMenuItem> mantisSubmenuM;
    /// Shown in the auto-start hint; may be missing.
    std::shared_ptr<NSView> tipView;
    /// The Dock icon is shown while this is on.
    std::shared_ptr<NSButton> dockButton;
    /// Closed when the Dock icon is hidden.
    std::shared_ptr<NSMenu> sMenu;
    std::shared_ptr<NSTextField> versionLabel;
    /// Gets the name and version as its title.
    std::shared_ptr<NSWindow> myWindow;
    /// "Do not show again."
    std::shared_ptr<NSButton> tipButton;
    std::shared_ptr<NSWindow> tipWindow;
    std::shared_ptr<NSImageView> tipImage;
    std::shared_ptr<NSTextField> tipText;
    std::shared_ptr<NSTextField> picCount; ///< "%d of %d"

    // ---- Written by the set-up -----------------------------------------------------------------
    std::string appVersion;

    // ---- Written by all that uses the settings -------------------------------------------------
    /// Fetched again before each use.
    NSUserDefaults* defaults = nullptr;

    // ---- Written by the tips -------------------------------------------------------------------
    /// The check box as last read or saved: 1 hides the tips at the start.
    std::int64_t neverTip = 0;
    /// The page number; 1 to 4 once the tips have been opened.
    std::int32_t demoCount = 0;

    // ---- Set-up --------------------------------------------------------------------------------
    /// Fills the outlets and registers the actions. Returns the names of the required outlets that
    /// the interface file lacks.
    std::vector<std::string> connectInterface(NSNib& nib);
    /// Call once, after `connectInterface`. Opens the tips unless the user has switched them off.
    void awakeFromNib();

    // ---- Tips ----------------------------------------------------------------------------------
    void showEasyStartTip(NSObject* sender);
    void tipNext(NSObject* sender);
    void tipPreverious(NSObject* sender);
    /// Shows the page of `demoCount`.
    void changePictures(NSObject* sender);
    void tipButtonChanged(NSObject* sender);
    /// Called when the tips window closes.
    void windowWillClose(NSObject* sender);

    // ---- Promotion menus -----------------------------------------------------------------------
    /// Replaces the three submenus.
    void addingPromoAppsOfmantisQRX(const std::vector<std::string>& titles);
    /// The sender is a menu item. Opens the store page of its application, or the list of all
    /// applications if it has none.
    void excuteMyPromo(NSObject* sender);

    // ---- Dock icon -----------------------------------------------------------------------------
    /// Shows the saved setting in the check box and applies it, without bringing the program to
    /// the front. Call once, after `awakeFromNib`, which stores the setting at the first start.
    void restoreDockSetting();
    void dockIconSwitching(NSObject* sender);
    /// Saves the Dock setting and returns true. Nothing else saves it, so a front end calls this
    /// before it ends the program.
    bool applicationShouldTerminateAfterLastWindowClosed();

    // ---- Auto-start hint -----------------------------------------------------------------------
    void tipsForAutostart(NSObject* sender);

    // ---- Links ---------------------------------------------------------------------------------
    void rateMe(NSObject* sender);
    void moreBYmantisqrx(NSObject* sender);

    // ---- Mails ---------------------------------------------------------------------------------
    void sendEmailtoMe(NSObject* sender);
    void featureRequest(NSObject* sender);

private:
    NSUserDefaults& fetchDefaults();
    void showPageNumber();
    void saveTipSetting();
    void open(const std::string& address);
    void openMail(const std::string& subjectFormat, const std::string& bodyTail);

    Platform platform_;
};

} // namespace vistrane
