#pragma once

#include <string>
#include <vector>

#include "platform/appkit/NSNib.h"
#include "platform/appkit/NSPopUpButton.h"

namespace vistrane {

/// A list of titles that nobody sees. The selection stays with its title when the items move.
class ConsolePopUpButton final : public NSPopUpButton {
public:
    void removeAllItems() override;
    void addItemWithTitle(const std::string& title) override;
    NSInteger indexOfSelectedItem() const override { return selected_; }

    void setAction(NSAction action) { action_ = std::move(action); }
    const std::vector<std::string>& itemTitles() const { return titles_; }

    /// The user chooses an item, be it the selected one: selects it and sends the action. Returns
    /// false, and does nothing, when there is no such item.
    bool userPicks(NSInteger index);

private:
    std::vector<std::string> titles_;
    NSInteger selected_ = -1;
    NSAction action_;
};

} // namespace vistrane
