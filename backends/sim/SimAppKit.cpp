#include "backends/sim/SimAppKit.h"

#include "backends/sim/SimMenus.h"

namespace vistrane {

void SimApplication::miniaturizeAll(NSObject*) {
    mainCall("miniaturizeAll");
}

bool SimApplication::setActivationPolicy(NSApplicationActivationPolicy policy) {
    mainCall("setActivationPolicy: " + std::to_string(policy));
    return true;
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

std::shared_ptr<NSMenu> SimAppKit::menu() {
    const std::string name = log_.nextName("menu");
    log_.requireMain(name);
    log_.record("menu -> " + name);
    return std::make_shared<SimMenu>(log_, name);
}

void SimAppKit::NSBeep() {
    log_.requireMain("NSBeep");
    log_.record("NSBeep");
}

} // namespace vistrane
