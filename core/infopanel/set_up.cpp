#include "core/infopanel/mantisQRXpanel.h"

#include "core/app/Outlets.h"
#include "core/infopanel/names.h"
#include "core/infopanel/promotions.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

std::string versionOf(const NSBundle& bundle) {
    const auto entry = [&bundle](const char* key) {
        return bundle.objectForInfoDictionaryKey(key).value_or("");
    };
    return stringWithFormat("%@.%@",
                            {entry("CFBundleShortVersionString"), entry("CFBundleVersion")});
}

} // namespace

mantisQRXpanel::mantisQRXpanel(const Platform& platform) : platform_(platform) {}

std::vector<std::string> mantisQRXpanel::connectInterface(NSNib& nib) {
    Outlets outlets(nib);
    outlets.require("mantisSubmenuS", mantisSubmenuS);
    outlets.require("mantisSubmenuD", mantisSubmenuD);
    outlets.require("mantisSubmenuM", mantisSubmenuM);
    outlets.take("tipView", tipView);
    outlets.require("dockButton", dockButton);
    outlets.require("sMenu", sMenu);
    outlets.require("versionLabel", versionLabel);
    outlets.require("myWindow", myWindow);
    outlets.require("tipButton", tipButton);
    outlets.require("tipWindow", tipWindow);
    outlets.require("tipImage", tipImage);
    outlets.require("tipText", tipText);
    outlets.require("picCount", picCount);

    nib.action("showEasyStartTip:", [this](NSObject* sender) { showEasyStartTip(sender); });
    nib.action("tipNext:", [this](NSObject* sender) { tipNext(sender); });
    nib.action("tipPreverious:", [this](NSObject* sender) { tipPreverious(sender); });
    nib.action("changePictures:", [this](NSObject* sender) { changePictures(sender); });
    nib.action("tipButtonChanged:", [this](NSObject* sender) { tipButtonChanged(sender); });
    nib.action("windowWillClose:", [this](NSObject* sender) { windowWillClose(sender); });
    nib.action("excuteMyPromo:", [this](NSObject* sender) { excuteMyPromo(sender); });
    nib.action("dockIconSwitching:", [this](NSObject* sender) { dockIconSwitching(sender); });
    nib.action("tipsForAutostart:", [this](NSObject* sender) { tipsForAutostart(sender); });
    nib.action("rateMe:", [this](NSObject* sender) { rateMe(sender); });
    nib.action("sendEmailtoMe:", [this](NSObject* sender) { sendEmailtoMe(sender); });
    nib.action("featureRequest:", [this](NSObject* sender) { featureRequest(sender); });
    nib.action("moreBYmantisqrx:", [this](NSObject* sender) { moreBYmantisqrx(sender); });
    return outlets.missing();
}

void mantisQRXpanel::awakeFromNib() {
    appVersion = versionOf(platform_.foundation.mainBundle());
    const std::string nameAndVersion = stringWithFormat("%@ v%@", {applicationName, appVersion});
    versionLabel->setStringValue(nameAndVersion);
    myWindow->setTitle(nameAndVersion);

    fetchDefaults();
    if (defaults->integerForKey("firstTime") != 1) {
        defaults->setInteger(1, "firstTime");
        defaults->setInteger(1, "iDock");
        defaults->synchronize();
    }

    addingPromoAppsOfmantisQRX(promotionTitles());

    neverTip = fetchDefaults().integerForKey("iTip");
    if (neverTip != 1) {
        showEasyStartTip(this);
    }
}

NSUserDefaults& mantisQRXpanel::fetchDefaults() {
    defaults = &platform_.foundation.standardUserDefaults();
    return *defaults;
}

} // namespace vistrane
