#include "core/app/standard_alert.h"

#include "platform/appkit/AppKit.h"

namespace vistrane {

void runStandardAlert(AppKit& appKit, const std::string& message, const std::string& informative) {
    const auto alert = appKit.alert();
    alert->setMessageText(message);
    alert->setInformativeText(informative);
    alert->addButtonWithTitle("Got it");
    alert->window().setTitlebarAppearsTransparent(true);
    alert->runModal();
}

} // namespace vistrane
