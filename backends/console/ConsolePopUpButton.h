#pragma once

#include <string>
#include <vector>

#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSPopUpButton.h"

namespace vistrane {

/// A pop-up list without a screen. The selected title stays selected when its index changes.
class ConsolePopUpButton final : public NSPopUpButton {
public:
    void removeAllItems() override;
    void addItemWithTitle(const std::string& title) override;
    NSInteger indexOfSelectedItem() const override { return selected_; }

    void setAction(NSAction action) { action_ = std::move(action); }
    const std::vector<std::string>& itemTitles() const { return titles_; }

    /// Selects an item, even if it is already selected, and sends the action. Returns false, and
    /// does nothing, if there is no such item.
    bool userPicks(NSInteger index);

private:
    std::vector<std::string> titles_;
    NSInteger selected_ = -1;
    NSAction action_;
};

} // namespace vistrane
