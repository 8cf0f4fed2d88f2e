#include "backends/console/ConsolePopUpButton.h"

#include <algorithm>

namespace vistrane {

void ConsolePopUpButton::removeAllItems() {
    titles_.clear();
    selected_ = -1;
}

void ConsolePopUpButton::addItemWithTitle(const std::string& title) {
    const auto same = std::find(titles_.begin(), titles_.end(), title);
    if (same != titles_.end()) {
        const NSInteger removed = same - titles_.begin();
        titles_.erase(same);
        if (removed == selected_) {
            selected_ = 0;
        } else if (removed < selected_) {
            --selected_;
        }
    }
    titles_.push_back(title);
    if (titles_.size() == 1) {
        selected_ = 0;
    }
}

bool ConsolePopUpButton::userPicks(NSInteger index) {
    if (index < 0 || index >= static_cast<NSInteger>(titles_.size())) {
        return false;
    }
    selected_ = index;
    if (action_) {
        action_(this);
    }
    return true;
}

} // namespace vistrane
