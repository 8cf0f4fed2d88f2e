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
        // On purpose: the first run's minutes have a key of their own, which nothing reads; the
        // saved minutes, "iMinute", are absent and read as 0 until the first save.
        defaults.setInteger(0, "iMinue");
        defaults.setInteger(5, "iSecond");
        platform_.appKit.NSBeep();
    }

    // The interface settles before its controls are set.
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
    // The values are stored as the controls hold them, unclamped.
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
