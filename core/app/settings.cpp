#include "core/app/AppDelegate.h"

#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

void AppDelegate::userDefaultsLoad() {
    NSUserDefaults& defaults = platform_.foundation.standardUserDefaults();
    if (defaults.integerForKey("firstTimeRunning") != 1) {
        defaults.setInteger(1, "firstTimeRunning");
        defaults.setInteger(0, "iSlow");
        defaults.setInteger(30, "iFPS");
        defaults.setInteger(0, "iHour");
        // A different key than "iMinute", on purpose. Nothing reads it. "iMinute" is absent, and so
        // reads as 0, until the first save.
        defaults.setInteger(0, "iMinue");
        defaults.setInteger(5, "iSecond");
        platform_.appKit.NSBeep();
    }

    // The interface is drawn before its controls are set.
    platform_.foundation.currentRunLoop().runUntilDate(
        platform_.foundation.dateWithTimeIntervalSinceNow(0.2));

    slowB->setState(defaults.integerForKey("iSlow"));
    fpsS->setIntegerValue(defaults.integerForKey("iFPS"));
    rateChanged(this);
    hInput->setIntegerValue(defaults.integerForKey("iHour"));
    mInput->setIntegerValue(defaults.integerForKey("iMinute"));
    sInput->setIntegerValue(defaults.integerForKey("iSecond"));
    timeIntervalchanged(this);
}

void AppDelegate::userDefaultsSave() {
    // The controls' values are stored unclamped.
    NSUserDefaults& defaults = platform_.foundation.standardUserDefaults();
    defaults.setInteger(slowB->state(), "iSlow");
    defaults.setInteger(fpsS->integerValue(), "iFPS");
    defaults.setInteger(hInput->integerValue(), "iHour");
    defaults.setInteger(mInput->integerValue(), "iMinute");
    defaults.setInteger(sInput->integerValue(), "iSecond");
    defaults.synchronize();
}

void AppDelegate::rateChanged(NSObject*) {
    fpsD->setStringValue(stringWithFormat("( fps = %d )", {fpsS->intValue()}));
}

} // namespace vistrane
