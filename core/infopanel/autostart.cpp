#include "core/infopanel/mantisQRXpanel.h"

#include "core/infopanel/names.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

// The text always names the running version, on purpose. Its spelling and its trailing blanks stay
// as they are.
constexpr char autostartText[] =
    "To save the reserved resource of your macOS under sandbox, we've stopped using hidden "
    "helper agent on loading 'Auto open at login (Auto start)' function from version %@. You "
    "can simply make any Mac app auto open at login in two ways:\n\n"
    "Method A:\n"
    "please goto your \n"
    "->System Preferences \n"
    "-> Users & Groups \n"
    "-> unlock change from left corner\n"
    "-> select your user name from left column\n"
    "-> select Login Items tab from right colum\n"
    "-> click + button to locate and add '%@'\n"
    "-> lock change from left corner\n\n"
    "Method B:\n"
    "from dock icon of '%@'\n"
    "->right click icon then clicking Options\n"
    "->select Open at Login\n"
    "(see attached screenshot for details)";

} // namespace

void mantisQRXpanel::tipsForAutostart(NSObject*) {
    const auto alert = platform_.appKit.alert();
    alert->setMessageText("Tips for 'Auto open at login'");
    alert->setInformativeText(
        stringWithFormat(autostartText, {appVersion, applicationName, applicationName}));
    if (tipView) {
        alert->setAccessoryView(tipView);
    }
    alert->addButtonWithTitle("Got it");
    alert->window().setTitlebarAppearsTransparent(true);
    alert->runModal();
}

} // namespace vistrane
