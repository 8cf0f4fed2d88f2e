#include "core/infopanel/mantisQRXpanel.h"

#include <algorithm>

#include "core/infopanel/promotions.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

namespace {

/// The address that a title opens: the store page of its promotion, otherwise the list of all
/// applications.
std::string addressOf(const std::optional<std::string>& title) {
    const std::vector<Promotion>& rows = promotions();
    const auto row = std::find_if(rows.begin(), rows.end(), [&title](const Promotion& promotion) {
        return promotion.title == title;
    });
    return row == rows.end() ? developerSearchLink : row->storeAddress;
}

} // namespace

void mantisQRXpanel::addingPromoAppsOfmantisQRX(const std::vector<std::string>& titles) {
    const auto add = [this](NSMenu& menu, const std::string& title) {
        auto item = menu.addItemWithTitle(
            title, [this](NSObject* sender) { excuteMyPromo(sender); }, "");
        item->setRepresentedObject(title);
        item->setTarget(this);
        return item;
    };

    const std::shared_ptr<NSMenu> menuS = platform_.appKit.menu();
    const std::shared_ptr<NSMenu> menuD = platform_.appKit.menu();
    const std::shared_ptr<NSMenu> menuM = platform_.appKit.menu();
    for (const std::string& title : titles) {
        add(*menuS, title)->setImage(platform_.appKit.imageNamed(title));
        add(*menuM, title)->setImage(platform_.appKit.imageNamed(title));
        add(*menuD, title);
    }
    mantisSubmenuS->setSubmenu(menuS);
    mantisSubmenuD->setSubmenu(menuD);
    mantisSubmenuM->setSubmenu(menuM);
}

void mantisQRXpanel::excuteMyPromo(NSObject* sender) {
    const auto* item = dynamic_cast<const NSMenuItem*>(sender);
    const std::string address = addressOf(item ? item->representedObject() : std::nullopt);
    if (!address.empty()) {
        open(address);
    }
}

} // namespace vistrane
