#include "core/infopanel/mantisQRXpanel.h"

#include "platform/appkit/AppKit.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

void mantisQRXpanel::restoreDockSetting() {
    const NSInteger shown = fetchDefaults().integerForKey("iDock");
    dockButton->setState(shown);
    platform_.appKit.sharedApplication().setActivationPolicy(
        shown == NSControlStateValueOff ? NSApplicationActivationPolicyAccessory
                                        : NSApplicationActivationPolicyRegular);
}

void mantisQRXpanel::dockIconSwitching(NSObject*) {
    NSApplication& application = platform_.appKit.sharedApplication();
    if (dockButton->state() == NSControlStateValueOff) {
        application.setActivationPolicy(NSApplicationActivationPolicyAccessory);
        sMenu->cancelTracking();
    } else {
        application.setActivationPolicy(NSApplicationActivationPolicyRegular);
    }
    // Changing the policy puts the program behind others, so it is activated after the click is
    // handled.
    dispatch_async(platform_.dispatch.dispatch_get_main_queue(),
                   [&application] { application.activateIgnoringOtherApps(true); });
}

bool mantisQRXpanel::applicationShouldTerminateAfterLastWindowClosed() {
    fetchDefaults().setInteger(dockButton->state(), "iDock");
    defaults->synchronize();
    return true;
}

} // namespace vistrane
