#include "platform/sim/SimAppKit.h"

namespace vistrane {

void SimApplication::miniaturizeAll(NSObject*) {
    mainCall("miniaturizeAll");
}

void SimApplication::activateIgnoringOtherApps(bool ignoring) {
    mainCall("activateIgnoringOtherApps: " + yesNo(ignoring));
}

bool SimWorkspace::openURL(const NSURL& url) {
    call("openURL: " + url.absoluteString());
    return opens;
}

SimAppKit::SimAppKit(CallLog& log, SimAlerts& alerts, SimOpenPanels& panels, SimPictures& pictures,
                     SimDrawing& drawing)
    : application(log), workspace(log), log_(log), alerts_(alerts), panels_(panels),
      pictures_(pictures), drawing_(drawing) {}

void SimAppKit::NSBeep() {
    log_.requireMain("NSBeep");
    log_.record("NSBeep");
}

} // namespace vistrane
