#include "core/infopanel/mantisQRXpanel.h"

#include "core/infopanel/promotions.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

void mantisQRXpanel::rateMe(NSObject*) {
    open(ownStorePage);
}

void mantisQRXpanel::moreBYmantisqrx(NSObject*) {
    open(developerSearchLink);
}

void mantisQRXpanel::open(const std::string& address) {
    platform_.appKit.sharedWorkspace().openURL(NSURL::URLWithString(address));
}

} // namespace vistrane
