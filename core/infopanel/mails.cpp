#include "core/infopanel/mantisQRXpanel.h"

#include "core/infopanel/names.h"
#include "core/infopanel/percent_encoding.h"
#include "core/infopanel/promotions.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

void mantisQRXpanel::sendEmailtoMe(NSObject*) {
    openMail("%@ %@ - support request", "\nmy issue:\n\n\n\n\nmyname:\nmycountry:");
}

void mantisQRXpanel::featureRequest(NSObject*) {
    const auto alert = platform_.appKit.alert();
    alert->setMessageText("Need more functions? or have some ideas?");
    alert->setInformativeText("Plese visit app's home page and leave your request there. You may "
                              "also drop us an email or check out all our apps up to now.");
    alert->addButtonWithTitle("feature request");
    alert->addButtonWithTitle("more by mantisQRX");
    alert->addButtonWithTitle("cancel");
    alert->window().setTitlebarAppearsTransparent(true);

    const NSModalResponse answer = alert->runModal();
    if (answer == NSAlertFirstButtonReturn) {
        open(ownStorePage);
        // Gives the store application time to start first.
        platform_.foundation.currentRunLoop().runUntilDate(
            platform_.foundation.dateWithTimeIntervalSinceNow(0.1));
        openMail("%@ %@ - frature request", "\nmy request:\n\n\n\n\nmyname:\nmycountry:");
    } else if (answer == NSAlertFirstButtonReturn + 1) {
        open(developerSearchLink);
    }
}

void mantisQRXpanel::openMail(const std::string& subjectFormat, const std::string& bodyTail) {
    const std::string system = platform_.foundation.processInfo().operatingSystemVersionString();
    const std::string subject = stringWithFormat(subjectFormat, {applicationName, appVersion});
    const std::string body =
        stringWithFormat("%@%@%@", {"Hi mantisQRX,\n\n\n\n\nmy OS:", system, bodyTail});
    const std::string subjectPart =
        stringWithFormat("SUBJECT=%@", {addingPercentEncoding(subject)});
    const std::string bodyPart = stringWithFormat("BODY=%@", {addingPercentEncoding(body)});
    open(stringWithFormat("mailto:%@?%@&%@",
                          {addingPercentEncoding(supportMailAddress), subjectPart, bodyPart}));
}

} // namespace vistrane
