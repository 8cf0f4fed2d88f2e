#include "core/infopanel/mantisQRXpanel.h"

#include "core/infopanel/tip_pages.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

void mantisQRXpanel::showEasyStartTip(NSObject* sender) {
    tipButton->setState(neverTip);
    demoCount = 1;
    showPageNumber();
    changePictures(this);
    tipWindow->makeKeyAndOrderFront(sender);
}

void mantisQRXpanel::tipNext(NSObject*) {
    if (demoCount < tipPageCount) {
        ++demoCount;
    }
    showPageNumber();
    changePictures(this);
}

void mantisQRXpanel::tipPreverious(NSObject*) {
    if (demoCount >= 2) {
        --demoCount;
    }
    showPageNumber();
    changePictures(this);
}

void mantisQRXpanel::changePictures(NSObject*) {
    const TipPage& page = tipPage(demoCount);
    tipImage->setImage(platform_.appKit.imageNamed(page.picture));
    tipText->setStringValue(page.text);
    tipText->setNeedsDisplay(true);
    tipImage->setNeedsDisplay(true);
}

void mantisQRXpanel::tipButtonChanged(NSObject*) {
    neverTip = tipButton->state();
    saveTipSetting();
}

void mantisQRXpanel::windowWillClose(NSObject*) {
    saveTipSetting();
}

void mantisQRXpanel::showPageNumber() {
    picCount->setStringValue(stringWithFormat("%d of %d", {demoCount, tipPageCount}));
}

void mantisQRXpanel::saveTipSetting() {
    fetchDefaults().setInteger(neverTip, "iTip");
    defaults->synchronize();
}

} // namespace vistrane
